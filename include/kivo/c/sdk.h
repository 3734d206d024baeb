#ifndef KIVO_C_SDK_H
#define KIVO_C_SDK_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The version of the library, such as "0.2.0". Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_version(void);

/** The interface versions that a session can have, oldest first, from index 0: "14" to "18". Empty beyond the last. Any
 * thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_interface_version(size_t index);

/** The importance of a log line. `KIVO_LOG_OFF` is a threshold only. */
typedef enum kivo_log_level KIVO_INT32 {
    KIVO_LOG_VERBOSE = 1,
    KIVO_LOG_DEBUG = 2,
    KIVO_LOG_INFO = 3,
    KIVO_LOG_WARNING = 4,
    KIVO_LOG_ERROR = 5,
    KIVO_LOG_OFF = 6,
} kivo_log_level;

/** The threshold of the log; `KIVO_LOG_INFO` at first. Any thread. */
KIVO_C_EXPORT kivo_log_level kivo_log_threshold(void);

/** Sets the threshold. It counts before the first session is opened; `KIVO_LOG_OFF` silences the log at any time. */
KIVO_C_EXPORT kivo_status kivo_log_set_threshold(kivo_log_level level);

/** Receives a log line without its line feed; the text is valid during the call. Called on any thread, also on several
 * at once. */
typedef void (*kivo_log_sink)(void* user, kivo_log_level level, kivo_text line);

/** Hands the log to `sink` in place of standard output; a null sink gives it back. `release` is called when another
 * sink takes the place, and no thread uses this one any longer. */
KIVO_C_EXPORT kivo_status kivo_log_set_sink(kivo_log_sink sink, void* user, kivo_release release);

/** Receives a report for the person who runs the host, such as a folder that cannot be written or a mistake of the
 * host's own. The texts carry no secret and are valid during the call. Called on any thread; must not call the library.
 */
typedef void (*kivo_report_sink)(void* user, kivo_text component, kivo_text report);

/** Hands reports to `sink` in place of standard error, from now on. A sink cannot be taken back, only replaced, and its
 * `user` is kept until the process ends. */
KIVO_C_EXPORT kivo_status kivo_reports_set_sink(kivo_report_sink sink, void* user);

/** The environments of the identity service. */
typedef enum kivo_environment KIVO_INT32 {
    KIVO_ENVIRONMENT_PROD = 0,
    KIVO_ENVIRONMENT_PREPROD = 1,
    KIVO_ENVIRONMENT_TEST = 2,
    KIVO_ENVIRONMENT_DEV = 3,
} kivo_environment;

/** "PROD", "PREPROD", "TEST" or "DEV"; empty for another integer. Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_environment_name(kivo_environment environment);

/** Where the identity service is, and the host's rules for reaching it. */
typedef struct kivo_deployment {
    /** The size of this structure as the host knows it. */
    size_t size;
    /** The https address of each environment's join page. An environment without a page cannot be joined. */
    kivo_text join_page_prod;
    kivo_text join_page_preprod;
    kivo_text join_page_test;
    kivo_text join_page_dev;
    /** Whether the face scan library runs in production mode, and its vendor's key for that mode. */
    bool face_tec_production;
    kivo_text face_tec_production_key;
    /** Whether pins are required even where no list of pins is found: requests then end in
     * `KIVO_CODE_UNSECURE_SERVER_PINNING_FAILED`. A host that ships a list of pins sets this member. */
    bool requires_pins;
} kivo_deployment;

/** Replaces the whole deployment, before the first join. Without this call the SDK's own bundle counts, whose pages are
 * placeholders. */
KIVO_C_EXPORT kivo_status kivo_deployment_install(const kivo_deployment* deployment);

/** The join page of an environment in the deployment in force; null for another integer. The host frees the string. Any
 * thread. */
KIVO_C_EXPORT kivo_string* kivo_deployment_join_page(kivo_environment environment);

/** Has requests tried without asking whether the machine has a network. For hosts whose identity service is on the same
 * machine; call before the first session is opened. */
KIVO_C_EXPORT kivo_status kivo_network_assume(void);

#ifdef __cplusplus
}
#endif

#endif
