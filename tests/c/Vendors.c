/* A host in C that brings the vendors' libraries: a document, a face and an ID card are scanned. */
#include "Check.h"

#include <kivo/c/linux.h>
#include <kivo/kivo.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct host {
    int answers;
    kivo_code code;
    kivo_event event;
    int readings;
    int finished;
    int initializations;
    int scans;
    int submissions;
    int cancels;
    bool has_progressed;
};

static void on_answer(void* user, const kivo_outcome* outcome) {
    struct host* host = user;
    host->answers += 1;
    host->code = outcome->failure ? outcome->failure->code->code : 0;
    host->event = outcome->event;
}

static bool is_answered(void* user) {
    return ((const struct host*)user)->answers > 0;
}

static bool answered(struct host* host) {
    const bool is_done = kivo_main_run_until(is_answered, host, 20000);
    host->answers = 0;
    return is_done;
}

static kivo_reading_start start(void* user, const kivo_reading_settings* settings, kivo_reading* reading) {
    static const kivo_text lines[] = {{"P<UTO", 5}, {"L898902C3", 9}};
    const kivo_document page = {.size = sizeof page, .page_lines = lines, .page_line_count = 2};
    const kivo_document long_page = {.size = sizeof page, .page_lines = lines, .page_line_count = 9};
    const kivo_document both = {
        .size = sizeof both, .session_id = KIVO_TEXT("READING-1"), .page_lines = lines, .page_line_count = 2};
    struct host* host = user;
    CHECK(settings->allowed_type_count == 1 && settings->allowed_types[0] == KIVO_DOCUMENT_PASSPORT &&
          settings->encryption_pin_count == 1 && settings->uses_pins);
    CHECK(settings->proxy_address.length > 0 && settings->access_key.length > 0 && settings->plays_shutter_sound == 0);
    host->readings += 1;
    if (host->readings == 1) {
        return KIVO_READING_NFC_NOT_SUPPORTED;
    }
    CHECK(kivo_reading_fail(reading, (kivo_reading_failure)17, NULL) == KIVO_MISUSE);
    CHECK(kivo_reading_succeed(reading, &long_page) == KIVO_MISUSE);
    CHECK((host->readings == 2 ? kivo_reading_fail(reading, KIVO_READING_NO_CHIP, &page)
                               : kivo_reading_succeed(reading, &both)) == KIVO_OK);
    CHECK(kivo_reading_succeed(reading, &page) == KIVO_MISUSE);
    return KIVO_READING_STARTED;
}

static void finish(void* user, kivo_text session_id) {
    ((struct host*)user)->finished += session_id.length > 0;
}

static void initialize(void* user, const kivo_scanner_keys* keys, kivo_initialization* initialization) {
    ((struct host*)user)->initializations += keys->device_key_identifier.length > 0 && !keys->production;
    CHECK(kivo_face_scanner_initialized(initialization, true) == KIVO_OK);
    CHECK(kivo_face_scanner_initialized(initialization, true) == KIVO_MISUSE);
}

static void submit(struct host* host, kivo_scan* scan, int32_t status) {
    static const kivo_text images[] = {{"aW1hZ2U=", 8}};
    const kivo_scan_result result = {.size = sizeof result,
                                     .status = status,
                                     .session_id = KIVO_TEXT("SCAN-1"),
                                     .scan = KIVO_TEXT("c2Nhbg=="),
                                     .images = images,
                                     .image_count = 1,
                                     .other_images = images,
                                     .other_image_count = 1};
    const kivo_scan_result too_many = {.size = sizeof too_many, .images = images, .image_count = 17};
    CHECK(kivo_scan_submit(scan, &too_many) == KIVO_MISUSE);
    host->submissions += 1;
    CHECK(kivo_scan_submit(scan, &result) == KIVO_OK);
}

static void start_scan(void* user, kivo_scan_kind kind, kivo_text session_token, kivo_scan* scan) {
    struct host* host = user;
    host->scans += 1;
    CHECK(kind == (host->scans == 4 ? KIVO_SCAN_ID_CARD : KIVO_SCAN_FACE) && session_token.length > 0);
    if (host->scans != 2) {
        submit(host, scan, host->scans == 1 ? 8 : 0);
    }
}

static bool proceed(void* user, kivo_scan* scan, kivo_text blob) {
    struct host* host = user;
    CHECK(blob.length > 0);
    if (host->submissions == 2) {
        submit(host, scan, 0); // the vendor wants another look
        return false;
    }
    CHECK(kivo_scan_end(scan) == KIVO_OK && kivo_scan_end(scan) == KIVO_MISUSE);
    return true;
}

static void cancel(void* user, kivo_scan* scan) {
    ((struct host*)user)->cancels += 1;
    CHECK(kivo_scan_end(scan) == KIVO_OK);
}

static void progress(void* user, kivo_scan* scan, float fraction) {
    (void)scan;
    ((struct host*)user)->has_progressed = fraction > 0 && fraction <= 1;
}

static void user_agent(void* user, kivo_text session_id, kivo_take_text take, void* taker) {
    (void)user;
    (void)session_id;
    take(taker, KIVO_TEXT("a scanner in C"));
}

static bool is_scanning(void* user) {
    return ((const struct host*)user)->scans == 2;
}

static bool is_cancelled(void* user) {
    return ((const struct host*)user)->cancels == 2;
}

struct aim {
    kivo_display* display;
    const char* outlet;
};

static bool is_tapped(void* user) {
    const struct aim* aim = user;
    return kivo_display_tap(aim->display, kivo_text_of(aim->outlet));
}

/* Taps a view as soon as it takes the tap. */
static bool tap(kivo_display* display, const char* outlet) {
    struct aim aim = {display, outlet};
    return kivo_main_run_until(is_tapped, &aim, 10000);
}

int main(void) {
    const kivo_linux_options places = {.size = sizeof places,
                                       .data_folder = kivo_text_of(getenv("KIVO_DATA_FOLDER")),
                                       .trusted_certificates = kivo_text_of(getenv("KIVO_AUTHORITY"))};
    struct host host = {0};
    kivo_document_reader reader = {.size = sizeof reader, .user = &host, .finish = finish};
    kivo_face_scanner scanner = {.size = sizeof scanner,
                                 .user = &host,
                                 .initialize = initialize,
                                 .start = start_scan,
                                 .proceed = proceed,
                                 .progress = progress,
                                 .user_agent = user_agent};
    kivo_log_set_threshold(KIVO_LOG_OFF);
    CHECK(kivo_linux_install(&places) == KIVO_OK && kivo_network_assume() == KIVO_OK);
    CHECK(kivo_document_reader_install(&reader) == KIVO_MISUSE);
    reader.start = start;
    CHECK(kivo_document_reader_install(&reader) == KIVO_OK);
    CHECK(kivo_face_scanner_install(&scanner) == KIVO_MISUSE);
    scanner.cancel = cancel;
    CHECK(kivo_face_scanner_install(&scanner) == KIVO_OK);

    const kivo_text page = kivo_text_of(getenv("KIVO_JOIN_PAGE"));
    const kivo_deployment deployment = {.size = sizeof deployment, .join_page_prod = page};
    const kivo_config config = {.size = sizeof config};
    const kivo_join_request request = {.size = sizeof request,
                                       .key = KIVO_TEXT("EXAMPLE-KEY"),
                                       .activation_code = KIVO_TEXT("123456"),
                                       .config = &config,
                                       .deployment = &deployment};
    const kivo_answer answer = {.call = on_answer, .user = &host};
    kivo_session* session = NULL;
    CHECK(kivo_join(&request, answer, &session) != 0 && answered(&host) && host.code == 0);

    kivo_display* display = kivo_display_new(390, 844);
    CHECK(kivo_session_set_display(session, display) == KIVO_OK);
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_NFC_SCAN, answer) == KIVO_OK);
    CHECK(tap(display, "passportOptionContainerView") && answered(&host) && host.code == KIVO_CODE_NFC_NOT_SUPPORTED);
    CHECK(tap(display, "passportOptionContainerView") && answered(&host) && host.code == KIVO_CODE_NO_CHIP);
    CHECK(tap(display, "passportOptionContainerView") && answered(&host) && host.code == 0);
    CHECK(host.event == KIVO_EVENT_DOCUMENT_SCAN && host.readings == 3 && host.finished == 1);

    CHECK(kivo_display_clear(display) == KIVO_OK);
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_FACEMAP_SCAN, answer) == KIVO_OK);
    CHECK(tap(display, "nextButton") && answered(&host) && host.code == KIVO_CODE_TIMEOUT);
    /* The host takes the screens away in the middle of a scan. */
    CHECK(tap(display, "nextButton") && kivo_main_run_until(is_scanning, &host, 10000));
    CHECK(kivo_display_clear(display) == KIVO_OK && kivo_main_run_until(is_cancelled, &host, 10000));
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_FACEMAP_SCAN, answer) == KIVO_OK);
    CHECK(tap(display, "nextButton") && answered(&host) && host.code == 0 && host.event == KIVO_EVENT_FACE_SCAN);
    CHECK(host.initializations > 0 && host.scans == 3 && host.submissions == 3 && host.has_progressed);

    CHECK(kivo_display_clear(display) == KIVO_OK);
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_OCR_SCAN, answer) == KIVO_OK && answered(&host));
    CHECK(host.code == 0 && host.event == KIVO_EVENT_OCR_SCAN && host.scans == 4);
    kivo_display_free(display);
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
