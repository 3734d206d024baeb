#ifndef KIVO_C_LINUX_H
#define KIVO_C_LINUX_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The places that the services of Linux use. An empty text stands for the default. */
typedef struct kivo_linux_options {
    /** The size of this structure as the host knows it. */
    size_t size;
    /** The host's bundle. Default: the folder `<executable>.bundle` beside the executable. */
    kivo_text main_bundle;
    /** The folder of the session and of the device identifier. It must belong to this user, and other users must not be
     * able to write it. Default: `kivo/<bundle identifier>` below `$XDG_DATA_HOME`. */
    kivo_text data_folder;
    /** A file of certificates (PEM) that replaces the system's store. Default: `$SSL_CERT_FILE`, else the store. */
    kivo_text trusted_certificates;
    /** The GStreamer pipeline that gives the camera's pictures. Default: the first camera. */
    kivo_text camera_pipeline;
    /** The person's language, such as "de" or "pt_BR". Default: that of `LC_ALL`, `LC_MESSAGES` or `LANG`. */
    kivo_text language;
} kivo_linux_options;

/** Puts the services of Linux with these places in force, before any other call but the log's. Null stands for the
 * defaults, which also count without this call. */
KIVO_C_EXPORT kivo_status kivo_linux_install(const kivo_linux_options* options);

#ifdef __cplusplus
}
#endif

#endif
