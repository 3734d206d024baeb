#ifndef KIVO_C_FACE_SCANNER_H
#define KIVO_C_FACE_SCANNER_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The vendor's library that scans faces and ID cards, as a table of functions that the host brings. The SDK has a scan
 * begin, the vendor shows screens of its own, the host submits what was scanned, and the SDK uploads it and gives the
 * server's verdict. Everything is on the main thread. */

/** The keys with which the vendor's library begins, valid during the call. They are secrets; each may be empty. */
typedef struct kivo_scanner_keys {
    /** The bytes that this release of the library fills. */
    size_t size;
    /** The vendor's production mode; otherwise its development mode, without a production key. */
    bool production;
    kivo_text production_key;
    kivo_text device_key_identifier;
    kivo_text face_scan_encryption_key;
} kivo_scanner_keys;

/** What is scanned. */
typedef enum kivo_scan_kind KIVO_INT32 {
    KIVO_SCAN_FACE = 0,
    KIVO_SCAN_ID_CARD = 1,
} kivo_scan_kind;

/** A beginning of the vendor's library; valid until the host tells how it ended. */
typedef struct kivo_initialization kivo_initialization;

/** A scan under way; valid until kivo_scan_end. */
typedef struct kivo_scan kivo_scan;

/** What was scanned, as the vendor gives it. */
typedef struct kivo_scan_result {
    /** The size of this structure as the host knows it. */
    size_t size;
    /** The vendor's number; 0 for a completed scan. */
    int32_t status;
    /** The vendor's session; empty for none. */
    kivo_text session_id;
    /** The scan in Base64, 64 MiB at most; empty for none. */
    kivo_text scan;
    /** Pictures in Base64, 16 at most: of a face the audit trail, of a card its front. */
    const kivo_text* images;
    size_t image_count;
    /** The same of a face's audit trail in low quality, and of a card's back. */
    const kivo_text* other_images;
    size_t other_image_count;
} kivo_scan_result;

/** Takes a text over, once, during the call that it came with. */
typedef void (*kivo_take_text)(void* taker, kivo_text text);

/** A host's face scanner. The table is copied, its functions and its `user` are used until the process ends, and its
 * functions must not throw. Texts are valid during the call. */
typedef struct kivo_face_scanner {
    /** The size of this structure as the host knows it, and the pointer that each function is called with. */
    size_t size;
    void* user;
    /** Begins the library; the host then calls kivo_face_scanner_initialized once. Must not be null. */
    void (*initialize)(void* user, const kivo_scanner_keys* keys, kivo_initialization* initialization);
    /** Shows the vendor's screens for a scan. The host submits results until the SDK has given its verdict, and ends
     * the scan when the vendor's screens have closed. Must not be null. */
    void (*start)(void* user, kivo_scan_kind kind, kivo_text session_token, kivo_scan* scan);
    /** The server has taken what was submitted; `blob` is for the vendor. Returns false when the vendor wants another
     * scan, or refuses the blob. Must not be null. */
    bool (*proceed)(void* user, kivo_scan* scan, kivo_text blob);
    /** The SDK ends the scan without success, or its screen was taken away: the vendor closes its screens. Must not be
     * null. */
    void (*cancel)(void* user, kivo_scan* scan);
    /** How much of the upload is done, from 0 to 1. May be null. */
    void (*progress)(void* user, kivo_scan* scan, float fraction);
    /** A text to show while the upload takes long. May be null. */
    void (*show_message)(void* user, kivo_scan* scan, kivo_text message);
    /** The language of the vendor's screens, and the text that they show after a success. May be null. */
    void (*set_language)(void* user, kivo_text language);
    void (*set_success_message)(void* user, kivo_text message);
    /** Hands the vendor's user agent for a session to `take`, with `taker`. May be null. */
    void (*user_agent)(void* user, kivo_text session_id, kivo_take_text take, void* taker);
} kivo_face_scanner;

/** Puts a face scanner in force, before the first session is opened. */
KIVO_C_EXPORT kivo_status kivo_face_scanner_install(const kivo_face_scanner* scanner);

/** Tells whether the vendor's library has begun. Any thread. */
KIVO_C_EXPORT kivo_status kivo_face_scanner_initialized(kivo_initialization* initialization, bool success);

/** Submits a result. The SDK answers with `proceed` or `cancel`, perhaps before this function returns. */
KIVO_C_EXPORT kivo_status kivo_scan_submit(kivo_scan* scan, const kivo_scan_result* result);

/** The vendor's screens have closed, with a verdict or without. */
KIVO_C_EXPORT kivo_status kivo_scan_end(kivo_scan* scan);

#ifdef __cplusplus
}
#endif

#endif
