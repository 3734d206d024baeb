/* A host in C that draws the screens itself: a person types the activation code, then leaves. */
#include "Check.h"

#include <kivo/c/linux.h>
#include <kivo/kivo.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct host {
    kivo_display* display;
    const char* wanted;
    int changes;
    int releases;
    int codes;
    int cancellations;
};

static void on_change(void* user) {
    ((struct host*)user)->changes += 1;
}

static void on_release(void* user) {
    ((struct host*)user)->releases += 1;
}

static void on_answer(void* user, const kivo_outcome* outcome) {
    struct host* host = user;
    host->codes +=
        !outcome->failure && outcome->event == KIVO_EVENT_SCAN_QR_CODE && strcmp(outcome->data.data, "12A456") == 0;
    host->cancellations += outcome->failure && outcome->failure->code->code == KIVO_CODE_CANCELLED_BY_USER &&
                           outcome->failure->kind == KIVO_FAILURE_SCREEN;
}

static bool shows(void* user) {
    struct host* host = user;
    kivo_string* snapshot = kivo_display_snapshot(host->display);
    const bool found = strstr(kivo_string_text(snapshot).data, host->wanted) != NULL;
    kivo_string_free(snapshot);
    return found;
}

static bool comes_to_show(struct host* host, const char* wanted) {
    host->wanted = wanted;
    return kivo_main_run_until(shows, host, 10000);
}

static bool is_left(void* user) {
    return ((const struct host*)user)->cancellations > 0;
}

int main(int count, char** arguments) {
    (void)arguments;
    const kivo_linux_options places = {
        .size = sizeof places, .data_folder = kivo_text_of(getenv("KIVO_DATA_FOLDER")), .language = KIVO_TEXT("de")};
    const kivo_text none = KIVO_TEXT("");
    struct host host = {0};
    kivo_log_set_threshold(KIVO_LOG_OFF);
    CHECK(kivo_linux_install(&places) == KIVO_OK && kivo_network_assume() == KIVO_OK);
    kivo_session* session = kivo_session_open(KIVO_TEXT("EXAMPLE-KEY"), none);
    CHECK(kivo_theme_set_number(session, KIVO_TEXT("zorCloseButtonAppearance.closeButtonIsHidden"), 0) == KIVO_OK);
    CHECK(kivo_theme_set_text(session, KIVO_TEXT("codeScreenGetStartedTitle"), KIVO_TEXT("Welcome")) == KIVO_OK);

    CHECK(kivo_display_new(0, 844) == NULL && kivo_display_set_size((kivo_display*)&host, 1, 1) == KIVO_MISUSE);
    host.display = kivo_display_new(320, 568);
    CHECK(kivo_display_set_size(host.display, 390, 844) == KIVO_OK);
    CHECK(kivo_display_set_margins(host.display, 47, 0, 34, 0) == KIVO_OK);
    CHECK(kivo_display_set_margins(host.display, -1, 0, 0, 0) == KIVO_MISUSE);
    CHECK(kivo_display_set_reading_size(host.display, 12) == KIVO_MISUSE);
    CHECK(kivo_display_on_change(host.display, on_change, &host, on_release) == KIVO_OK);
    const kivo_answer answer = {.call = on_answer, .user = &host, .release = on_release};
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_ACTIVATION_CODE, answer) == KIVO_MISUSE && host.releases == 1);
    CHECK(kivo_session_set_display(session, host.display) == KIVO_OK);
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_SELFIE_IMAGE, answer) == KIVO_MISUSE && host.releases == 2);
    kivo_session* old = kivo_session_open(KIVO_TEXT("EXAMPLE-KEY"), KIVO_TEXT("15"));
    CHECK(kivo_session_set_display(old, host.display) == KIVO_OK);
    CHECK(kivo_session_acquire(old, KIVO_OBJECT_OCR_SCAN, answer) == KIVO_MISUSE && host.releases == 3);
    CHECK(kivo_session_set_display(old, NULL) == KIVO_OK);
    CHECK(kivo_session_acquire(session, KIVO_OBJECT_ACTIVATION_CODE, answer) == KIVO_OK);

    CHECK(comes_to_show(&host, "\"text\":\"Welcome\""));
    CHECK(comes_to_show(&host, "\"width\":390,\"height\":844,\"screen\":\"Aktivierungscode\""));
    CHECK(comes_to_show(&host, "\"kind\":\"view\",\"frame\":[0,0,390,844],"));
    CHECK(comes_to_show(&host, "\"outlet\":\"textFieldDigitOne\""));
    CHECK(kivo_display_type(host.display, KIVO_TEXT("textFieldDigitOne"), KIVO_TEXT("129")));
    CHECK(kivo_display_delete_backward(host.display) && kivo_display_type(host.display, none, KIVO_TEXT("A4")));
    CHECK(comes_to_show(&host, "\"value\":\"A\""));
    CHECK(comes_to_show(&host, "{\"role\":\"heading\",\"name\":\"Welcome\",\"outlet\":\"getStartedTitleLabel\","));
    CHECK(comes_to_show(&host, "\"states\":[\"focusable\",\"focused\",\"required\"]"));
    if (count > 1) { // for people who look
        kivo_string* snapshot = kivo_display_snapshot(host.display);
        puts(kivo_string_text(snapshot).data);
        kivo_string_free(snapshot);
    }
    CHECK(host.codes == 0 && kivo_display_paste(host.display, none, KIVO_TEXT(" 5\n")));
    CHECK(kivo_display_type(host.display, none, KIVO_TEXT("6")));
    CHECK(kivo_main_run_until(is_left, &host, 50) == false && host.codes == 1);
    CHECK(kivo_display_set_appearance(host.display, 2) == KIVO_MISUSE);
    CHECK(comes_to_show(&host, "\"background\":\"#ffffffff\""));
    CHECK(kivo_display_set_appearance(host.display, 1) == KIVO_OK);
    CHECK(comes_to_show(&host, "\"background\":\"#0f1318ff\""));
    CHECK(kivo_display_set_reading_size(host.display, 9) == KIVO_OK && kivo_display_touch(host.display, 195, 200));
    CHECK(!kivo_display_tap(host.display, KIVO_TEXT("nothing")) && !kivo_display_touch(host.display, -1, 0));
    CHECK(!kivo_display_scroll(host.display, KIVO_TEXT("closeButton"), 0));
    CHECK(kivo_display_tap(host.display, KIVO_TEXT("closeButton")) && kivo_main_run_until(is_left, &host, 10000));
    CHECK(kivo_display_clear(host.display) == KIVO_OK && comes_to_show(&host, "\"screen\":\"\"") && host.changes > 0);

    CHECK(kivo_session_set_display(session, NULL) == KIVO_OK);
    kivo_display_free(host.display);
    kivo_display_free(NULL);
    CHECK(kivo_display_snapshot(host.display) == NULL && host.releases == 4);
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
