#ifndef KIVO_C_DOCUMENT_READER_H
#define KIVO_C_DOCUMENT_READER_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The vendor's library that reads passports and cards, as a table of functions that the host brings. The SDK's document
 * screen begins a reading, the vendor shows screens of its own and sends the document to the document proxy, and the
 * host tells how the reading ended. */

/** The kinds of documents, by their size (ICAO 9303). */
typedef enum kivo_document_type KIVO_INT32 {
    KIVO_DOCUMENT_PASSPORT = 0,
    KIVO_DOCUMENT_IDENTITY_CARD_TD1 = 1,
    KIVO_DOCUMENT_IDENTITY_CARD_TD2 = 2,
} kivo_document_type;

/** Why a reading failed. */
typedef enum kivo_reading_failure KIVO_INT32 {
    KIVO_READING_BACKGROUND_TIMEOUT = 0,
    KIVO_READING_SESSION_EXPIRED = 1,
    KIVO_READING_AUTHORISATION_ERROR = 2,
    KIVO_READING_SERVER_SESSION_ERROR = 3,
    KIVO_READING_SSL_ERROR = 4,
    KIVO_READING_NFC_ACCESS_CONTROL_ERROR = 5,
    KIVO_READING_CONNECTION_ERROR = 6,
    KIVO_READING_TOO_MANY_REQUESTS_ERROR = 7,
    KIVO_READING_NFC_ERROR = 8,
    KIVO_READING_USER_CANCELLED = 9,
    KIVO_READING_CAMERA_PERMISSION_DENIED = 10,
    KIVO_READING_NO_CHIP = 11,
    KIVO_READING_UNSUPPORTED_DOCUMENT = 12,
    KIVO_READING_BACK_NAVIGATION = 13,
    KIVO_READING_WRONG_DOCUMENT_TYPE = 14,
    KIVO_READING_VIZ_CAPTURE_TIMEOUT = 15,
    KIVO_READING_OTHER = 16,
} kivo_reading_failure;

/** Whether a reading has begun. */
typedef enum kivo_reading_start KIVO_INT32 {
    KIVO_READING_STARTED = 0,
    KIVO_READING_INVALID_CONFIGURATION = 1,
    KIVO_READING_NFC_NOT_SUPPORTED = 2,
    KIVO_READING_NOT_STARTED = 3,
} kivo_reading_start;

/** The settings of a reading, valid during the call. */
typedef struct kivo_reading_settings {
    /** The bytes that this release of the library fills. */
    size_t size;
    /** The documents that a person may have read, and their number. */
    const kivo_document_type* allowed_types;
    size_t allowed_type_count;
    /** The address of the document proxy, and its access key. The key is a secret. */
    kivo_text proxy_address;
    kivo_text access_key;
    /** The pins of the keys with which the data is encrypted in addition to the connection's own encryption. */
    const kivo_text* encryption_pins;
    size_t encryption_pin_count;
    /** Whether connections go to pinned servers only. */
    bool uses_pins;
    /** The number of failed readings of the chip after which a person may go on without it. */
    int32_t skip_chip_after_attempts;
    int32_t instructions_play_count;
    bool shows_instructions_on_first_use_only;
    bool shows_document_selection;
    bool shows_page_result;
    bool shows_chip_result;
    bool plays_shutter_sound;
} kivo_reading_settings;

/** A reading under way; valid until the host tells how it ended. */
typedef struct kivo_reading kivo_reading;

/** What was read. Personal data: the library never logs it. */
typedef struct kivo_document {
    /** The size of this structure as the host knows it. */
    size_t size;
    /** The name under which the document proxy keeps the data of the chip; empty when the chip was not read. */
    kivo_text session_id;
    /** The lines at the foot of the data page, 8 at most; none when the page was not read. */
    const kivo_text* page_lines;
    size_t page_line_count;
} kivo_document;

/** A host's document reader. The table is copied, its functions and its `user` are used until the process ends, on the
 * main thread, and its functions must not throw. */
typedef struct kivo_document_reader {
    /** The size of this structure as the host knows it, and the pointer that each function is called with. */
    size_t size;
    void* user;
    /** Begins a reading. With `KIVO_READING_STARTED` the host tells later how it ended, in one of the two functions
     * below, when the vendor's screens have closed; otherwise `reading` is not valid any longer. Must not be null. */
    kivo_reading_start (*start)(void* user, const kivo_reading_settings* settings, kivo_reading* reading);
    /** The SDK no longer needs the session of that name at the document proxy. May be null. */
    void (*finish)(void* user, kivo_text session_id);
} kivo_document_reader;

/** Puts a document reader in force, on the main thread, before the first session is opened. */
KIVO_C_EXPORT kivo_status kivo_document_reader_install(const kivo_document_reader* reader);

/** Ends a reading with what was read; null where it succeeded in a way that has neither. Any thread. */
KIVO_C_EXPORT kivo_status kivo_reading_succeed(kivo_reading* reading, const kivo_document* document);

/** Ends a reading without success. `document` gives the lines of the page where they were read; it may be null. Any
 * thread. */
KIVO_C_EXPORT kivo_status kivo_reading_fail(kivo_reading* reading, kivo_reading_failure reason,
                                            const kivo_document* document);

#ifdef __cplusplus
}
#endif

#endif
