#ifndef KIVO_C_SESSION_H
#define KIVO_C_SESSION_H

#include <kivo/c/base.h>
#include <kivo/c/codes.h>
#include <kivo/c/sdk.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The step of a session that a success reports. */
typedef enum kivo_event KIVO_INT32 {
    KIVO_EVENT_SCAN_QR_CODE = 0,    /**< A code was typed or scanned; the data is the code. */
    KIVO_EVENT_JOIN_SESSION = 1,    /**< A session was joined; the data is its transaction identifier. */
    KIVO_EVENT_UPDATE_SESSION = 2,  /**< An update was accepted. */
    KIVO_EVENT_SESSION_STATUS = 3,  /**< A status request was accepted. */
    KIVO_EVENT_COMMIT_SESSION = 4,  /**< A commit was accepted. */
    KIVO_EVENT_UPLOAD_DOCUMENT = 5, /**< An upload was accepted; the data is the activation code. */
    KIVO_EVENT_DOCUMENT_SCAN = 6,   /**< A document was read. */
    KIVO_EVENT_FACE_SCAN = 7,       /**< A face scan succeeded. */
    KIVO_EVENT_OCR_SCAN = 8,        /**< An ID card was scanned. */
} kivo_event;

/** The name, such as "JOIN_SESSION"; empty for another integer. Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_event_name(kivo_event event);

/** The subject of an upload or of a screen. */
typedef enum kivo_object KIVO_INT32 {
    KIVO_OBJECT_ACTIVATION_CODE = 0,
    KIVO_OBJECT_NFC_SCAN = 1,
    KIVO_OBJECT_MRZ_SCAN = 2,
    KIVO_OBJECT_FACEMAP_SCAN = 3,
    KIVO_OBJECT_SELFIE_IMAGE = 4,
    KIVO_OBJECT_DOCUMENT_MAIN_IMAGE = 5,
    KIVO_OBJECT_DOCUMENT_BACK_IMAGE = 6,
    KIVO_OBJECT_OCR_SCAN = 7,
} kivo_object;

/** The name, such as "NFC_SCAN"; empty for another integer. Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_object_name(kivo_object object);

/** What made a request fail, finer than the code. */
typedef enum kivo_failure_kind KIVO_INT32 {
    KIVO_FAILURE_REFUSED = 0,        /**< The identity service refused the request. */
    KIVO_FAILURE_NO_NETWORK = 1,     /**< The machine has no network. */
    KIVO_FAILURE_CONNECTION = 2,     /**< No connection, or it ended before the whole answer. */
    KIVO_FAILURE_TIMED_OUT = 3,      /**< No whole answer within the time limit. */
    KIVO_FAILURE_CERTIFICATE = 4,    /**< The server's certificate is not trusted. */
    KIVO_FAILURE_PINS = 5,           /**< The server is not pinned, or pins are required and none is known. */
    KIVO_FAILURE_STATUS = 6,         /**< The HTTP status is outside 200 to 299, or the answer has no body. */
    KIVO_FAILURE_ANSWER = 7,         /**< The answer cannot be used. */
    KIVO_FAILURE_ADDRESS = 8,        /**< The deployment or the session lacks the address. */
    KIVO_FAILURE_NO_SESSION = 9,     /**< No session is stored, or it cannot be read. */
    KIVO_FAILURE_NO_ATTEMPTS = 10,   /**< No attempt remains. */
    KIVO_FAILURE_CONFIGURATION = 11, /**< The configuration of the join names no environment. */
    KIVO_FAILURE_STORAGE = 12,       /**< The keychain could not store or remove the session. */
    KIVO_FAILURE_SCREEN = 13,        /**< A screen ended without success; the code says how. */
    KIVO_FAILURE_OTHER = 14,         /**< The request was given up, no thread or memory, or an unknown cause. */
    KIVO_FAILURE_OVERTAKEN = 15,     /**< A join that began later was answered before this one; its session stays. */
} kivo_failure_kind;

/** The name, such as "timedOut"; empty for another integer. Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_failure_kind_name(kivo_failure_kind kind);

/** Why a request or a screen failed. */
typedef struct kivo_failure {
    /** The bytes that this release of the library fills. */
    size_t size;
    /** Never null. */
    const kivo_response_code* code;
    kivo_failure_kind kind;
    /** One sentence in English for the person who reads the host's log. Carries no secret. */
    kivo_text cause;
} kivo_failure;

/** Frees what kivo_session_last_failure gave. Does nothing for null. Any thread. */
KIVO_C_EXPORT void kivo_failure_free(kivo_failure* failure);

/** The outcome of a request or of a screen. The library owns it and all that it points to; it is valid during the
 * answer. */
typedef struct kivo_outcome {
    /** The bytes that this release of the library fills. */
    size_t size;
    /** Null for a success. */
    const kivo_failure* failure;
    /** For a success, the step and its data; the data is the transaction identifier unless the event says otherwise. */
    kivo_event event;
    kivo_text data;
} kivo_outcome;

/** Where the outcome of a request goes. `call` may be null, which drops the outcome. All members stay as they are in
 * all releases. */
typedef struct kivo_answer {
    /** The function, the pointer that it is called with, and the function that lets the pointer go. */
    void (*call)(void* user, const kivo_outcome* outcome);
    void* user;
    kivo_release release;
} kivo_answer;

/** A request under way; 0 stands for a call that was a mistake, and is not answered. The number is never used again,
 * and there is nothing to free. */
typedef uint64_t kivo_request;

/** Gives a request up: its answer is called with `KIVO_CODE_CANCELLED_BY_USER` before this function returns, on the
 * calling thread, and its `user` is released. The request itself goes on, because the service may have received it
 * already; its outcome is dropped. Returns false when the answer has come already. Any thread. */
KIVO_C_EXPORT bool kivo_request_give_up(kivo_request request);

/** A host's requirements for a session. The identity service defines what the texts mean. */
typedef struct kivo_config {
    /** The size of this structure as the host knows it, and the environment whose join page is asked. */
    size_t size;
    kivo_environment environment;
    kivo_text document_list;      /**< The accepted documents ("kivo-app-doclist"). */
    kivo_text expiry_grace;       /**< How long a document may have expired ("kivo-expiry-grace"). */
    kivo_text face_match_minimum; /**< The least likeness of face and document ("kivo-facematch-min"). */
    kivo_text document_issuers;   /**< The accepted issuers ("kivo-doc-issuers"). */
    kivo_text images;             /**< The images that the service is to return ("kivo-images"). */
} kivo_config;

/** A verification session. A process has one for each interface version, and owns it: a handle is valid until the
 * process ends. */
typedef struct kivo_session kivo_session;

/** The session of an interface version, chosen by the first two characters of `version`, "14" to "18"; empty for the
 * newest. `key` becomes part of the device code that a join sends. Opening a version again gives the same handle with
 * the new key. Null for any other version. */
KIVO_C_EXPORT kivo_session* kivo_session_open(kivo_text key, kivo_text version);

/** The threads on which answers come. */
typedef enum kivo_answer_queue KIVO_INT32 {
    /** The main queue, after the call has returned. The host runs the queue (kivo/c/main_queue.h). */
    KIVO_ANSWER_ON_MAIN_QUEUE = 0,
    /** The library's transport thread, one at a time; an answer that needs no exchange comes on the calling thread
     * before the call returns. Further requests may be made there, but screens and the theme belong to the main thread.
     */
    KIVO_ANSWER_ON_TRANSPORT = 1,
} kivo_answer_queue;

/** Chooses where the answers of later requests come. A session that this interface has opened begins with the main
 * queue. */
KIVO_C_EXPORT kivo_status kivo_session_set_answer_queue(kivo_session* session, kivo_answer_queue queue);

/* Requests. Each is answered exactly once. Inside an answer, further requests and kivo_session_reset may be called. A
 * call may wait for the keychain, which another process can hold, for ten seconds at most. */

/** Joins the session of an activation code; succeeds with `KIVO_EVENT_JOIN_SESSION`. The join takes the place of an
 * earlier session, also when the service refuses it. */
KIVO_C_EXPORT kivo_request kivo_session_join(kivo_session* session, kivo_text activation_code,
                                             const kivo_config* config, kivo_answer answer);

/** Reports an action and a message to the session that this process has joined; succeeds with
 * `KIVO_EVENT_UPDATE_SESSION`. */
KIVO_C_EXPORT kivo_request kivo_session_update(kivo_session* session, kivo_text action, kivo_text message,
                                               kivo_answer answer);

/** Asks for the session's status; succeeds with `KIVO_EVENT_SESSION_STATUS` when the service does not refuse. */
KIVO_C_EXPORT kivo_request kivo_session_status(kivo_session* session, kivo_answer answer);

/** Uploads text, such as Base64, as evidence, and counts one attempt; succeeds with `KIVO_EVENT_UPLOAD_DOCUMENT`. Fails
 * with `KIVO_CODE_RETRY_LIMIT_REACHED` when no attempt remains, and before a join of this process has set a limit. */
KIVO_C_EXPORT kivo_request kivo_session_upload(kivo_session* session, kivo_object object, kivo_text data,
                                               kivo_answer answer);

/** Commits the session; succeeds with `KIVO_EVENT_COMMIT_SESSION`. */
KIVO_C_EXPORT kivo_request kivo_session_commit(kivo_session* session, kivo_answer answer);

/** Opens the session's resume page in the person's browser. Does nothing without a session. */
KIVO_C_EXPORT kivo_status kivo_session_resume_in_browser(kivo_session* session);

/** Deletes the stored session. Requests under way continue, and the handle is ready for another join. */
KIVO_C_EXPORT kivo_status kivo_session_reset(kivo_session* session);

/** The failure that the session told last, or null before the first. A request that was given up does not count. The
 * host frees it with kivo_failure_free. Any thread. */
KIVO_C_EXPORT kivo_failure* kivo_session_last_failure(const kivo_session* session);

/** What a host without special wishes needs for a join. */
typedef struct kivo_join_request {
    /** The size of this structure as the host knows it, and what becomes part of the device code. */
    size_t size;
    kivo_text key;
    /** The interface version; empty for the newest. */
    kivo_text version;
    kivo_text activation_code;
    /** Must not be null. */
    const kivo_config* config;
    /** Null for the deployment in force. */
    const kivo_deployment* deployment;
} kivo_join_request;

/** Installs the deployment, opens the session and joins it; the answers of the session come on the main queue.
 * `session`, which may be null, receives the handle before this function returns, or null after a mistake. */
KIVO_C_EXPORT kivo_request kivo_join(const kivo_join_request* request, kivo_answer answer, kivo_session** session);

#ifdef __cplusplus
}
#endif

#endif
