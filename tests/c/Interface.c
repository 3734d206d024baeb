/* Tries what the example in C does not: mistakes of a host, ownership, and the functions beside a session's road. */
#include "Check.h"

#include <kivo/c/linux.h>
#include <kivo/kivo.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct heard {
    int answers;
    int releases;
    kivo_code code;
    kivo_failure_kind kind;
};

static void on_answer(void* user, const kivo_outcome* outcome) {
    struct heard* heard = user;
    heard->answers += 1;
    heard->code = outcome->failure ? outcome->failure->code->code : 0;
    heard->kind = outcome->failure ? outcome->failure->kind : 0;
}

static void on_release(void* user) {
    ((struct heard*)user)->releases += 1;
}

static kivo_answer to(struct heard* heard) {
    memset(heard, 0, sizeof *heard);
    return (kivo_answer){.call = on_answer, .user = heard, .release = on_release};
}

static bool is_answered(void* user) {
    return ((const struct heard*)user)->answers > 0;
}

static void stop(void* user) {
    ((struct heard*)user)->answers += 1;
    kivo_main_stop();
}

static void on_line(void* user, kivo_log_level level, kivo_text line) {
    ((struct heard*)user)->answers += level == KIVO_LOG_WARNING && strstr(line.data, "INVALID_STATUS_SESSION") != NULL;
}

static void names(void) {
    CHECK(strcmp(kivo_status_name(KIVO_NO_MEMORY).data, "KIVO_NO_MEMORY") == 0);
    CHECK(kivo_version().length == strlen(kivo_version().data) && kivo_version().length >= 5);
    CHECK(strcmp(kivo_interface_version(0).data, "14") == 0 && kivo_interface_version(5).length == 0);
    CHECK(strcmp(kivo_object_name(KIVO_OBJECT_OCR_SCAN).data, "OCR_SCAN") == 0);
    CHECK(strcmp(kivo_environment_name(KIVO_ENVIRONMENT_DEV).data, "DEV") == 0);
    CHECK(kivo_event_name((kivo_event)9).length == 0 && kivo_failure_kind_name((kivo_failure_kind)-1).length == 0);
    size_t codes = 0;
    for (const kivo_response_code* code; (code = kivo_response_code_at(codes)) != NULL; ++codes) {
        CHECK(kivo_response_code_of(code->code) == code && kivo_response_code_named(code->name) == code);
        CHECK(code->message.length > 0 && code->generic_message.length > 0);
    }
    CHECK(kivo_response_code_is_cancellation(KIVO_CODE_BACK_NAVIGATION) && !kivo_response_code_is_cancellation(0));
    CHECK(codes == 66 && kivo_response_code_of(1) == NULL && kivo_response_code_named(KIVO_TEXT("?")) == NULL);
}

static void mistakes(kivo_session* session) {
    struct heard heard;
    int foreign = 0;
    const kivo_config sound = {.size = sizeof sound};
    const kivo_config bad_environment = {.size = sizeof sound, .environment = (kivo_environment)4};
    const kivo_config bad_text = {.size = sizeof sound, .images = {NULL, 1}};
    const kivo_config no_size = {0};

    const struct {
        kivo_config known;
        char unknown;
    } newer = {{.size = sizeof newer}, 1};

    const struct {
        kivo_session* session;
        kivo_text code;
        const kivo_config* config;
    } rows[] = {
        {NULL, KIVO_TEXT("123456"), &sound},
        {(kivo_session*)&foreign, KIVO_TEXT("123456"), &sound},
        {session, KIVO_TEXT("\xff"), &sound},
        {session, KIVO_TEXT("123456"), NULL},
        {session, KIVO_TEXT("123456"), &bad_environment},
        {session, KIVO_TEXT("123456"), &bad_text},
        {session, KIVO_TEXT("123456"), &no_size},
        {session, KIVO_TEXT("123456"), &newer.known},
    };

    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        CHECK(kivo_session_join(rows[i].session, rows[i].code, rows[i].config, to(&heard)) == 0);
        CHECK(heard.answers == 0 && heard.releases == 1);
    }
    CHECK(kivo_session_open(KIVO_TEXT("KEY"), KIVO_TEXT("13")) == NULL);
    CHECK(kivo_session_upload(session, (kivo_object)8, KIVO_TEXT("d"), to(&heard)) == 0 && heard.releases == 1);
    CHECK(kivo_session_set_answer_queue(session, (kivo_answer_queue)2) == KIVO_MISUSE);
    CHECK(kivo_session_last_failure(NULL) == NULL && kivo_session_reset(NULL) == KIVO_MISUSE);
    CHECK(kivo_session_resume_in_browser(session) == KIVO_OK); // there is no session to resume
    CHECK(kivo_log_set_threshold((kivo_log_level)0) == KIVO_MISUSE && kivo_deployment_install(NULL) == KIVO_MISUSE);
    CHECK(kivo_deployment_join_page((kivo_environment)-1) == NULL && !kivo_request_give_up(12345));
    CHECK(kivo_main_post(0, NULL, &heard, on_release) == KIVO_MISUSE && heard.releases == 2);
    kivo_string_free(NULL);
    kivo_failure_free(NULL);
    CHECK(kivo_string_text(NULL).data[0] == '\0');
}

static void looks(kivo_session* session) {
    const kivo_text color = KIVO_TEXT("zorCloseButtonAppearance.closeButtonTitleColor");
    double size = 0;
    size_t properties = 0;
    for (kivo_text name; (name = kivo_theme_property(properties)).length > 0; ++properties) {
        switch (kivo_theme_property_kind(name)) {
        case KIVO_PROPERTY_TEXT:
            CHECK(kivo_theme_set_text(session, name, name) == KIVO_OK);
            break;
        case KIVO_PROPERTY_NUMBER:
            CHECK(kivo_theme_set_number(session, name, 1) == KIVO_OK && kivo_theme_number(session, name) == 1);
            break;
        case KIVO_PROPERTY_COLOR:
            CHECK(kivo_theme_set_color(session, name, (kivo_color){0.1, 0.2, 0.3, 1}) == KIVO_OK);
            CHECK(kivo_theme_color(session, name).blue == 0.3);
            break;
        case KIVO_PROPERTY_FONT:
            CHECK(kivo_theme_set_font(session, name, KIVO_TEXT(""), 21) == KIVO_OK);
            kivo_string_free(kivo_theme_font(session, name, &size));
            CHECK(size == 21);
            break;
        default:
            CHECK(false);
        }
    }
    for (size_t i = 0; i < properties; ++i) {
        const kivo_text name = kivo_theme_property(i);
        kivo_string* text = kivo_theme_text(session, name);
        CHECK((text != NULL) == (kivo_theme_property_kind(name) == KIVO_PROPERTY_TEXT));
        CHECK(!text || strcmp(kivo_string_text(text).data, name.data) == 0); // each name has a place of its own
        kivo_string_free(text);
    }
    CHECK(properties > 50 && kivo_theme_property_kind(KIVO_TEXT("?")) == KIVO_PROPERTY_UNKNOWN);
    CHECK(kivo_theme_set_number(session, KIVO_TEXT("codeTextFieldStyle"), 2) == KIVO_MISUSE);
    CHECK(kivo_theme_set_number(session, color, 1) == KIVO_MISUSE);
    CHECK(kivo_theme_set_color(session, color, (kivo_color){2, 0, 0, 1}) == KIVO_MISUSE);
    CHECK(kivo_theme_set_font(session, KIVO_TEXT("textFont"), KIVO_TEXT(""), 1) == KIVO_MISUSE);
    CHECK(kivo_theme_set_font(session, KIVO_TEXT("screenTitleFont"), KIVO_TEXT("No Such Font"), 1) == KIVO_FAILED);
}

static void on_report(void* user, kivo_text component, kivo_text report) {
    (void)component;
    ((struct heard*)user)->answers += strcmp(report.data, "kivo_session_reset: session is null.") == 0;
}

static void reports(void) {
    static struct heard heard;
    CHECK(kivo_reports_set_sink(NULL, NULL) == KIVO_MISUSE && kivo_reports_set_sink(on_report, &heard) == KIVO_OK);
    CHECK(kivo_session_reset(NULL) == KIVO_MISUSE && heard.answers == 1);
}

static void queues(kivo_session* session) {
    struct heard heard;
    struct heard sink = {0};
    to(&heard);
    CHECK(kivo_main_post(1, stop, &heard, on_release) == KIVO_OK && kivo_main_run() == KIVO_OK);
    CHECK(heard.answers == 1 && heard.releases == 1);
    heard.answers = 0;
    CHECK(!kivo_main_run_until(is_answered, &heard, 1));

    CHECK(kivo_log_set_sink(on_line, &sink, on_release) == KIVO_OK);
    CHECK(kivo_session_status(session, to(&heard)) != 0 && heard.answers == 0); // there is no session
    CHECK(kivo_main_run_until(is_answered, &heard, 10000) && heard.kind == KIVO_FAILURE_NO_SESSION);
    CHECK(kivo_main_drain() <= 1 && heard.answers == 1 && heard.releases == 1 && sink.answers == 1);
    CHECK(kivo_session_set_answer_queue(session, KIVO_ANSWER_ON_TRANSPORT) == KIVO_OK);
    const kivo_request answered = kivo_session_status(session, to(&heard));
    CHECK(answered != 0 && heard.answers == 1 && heard.releases == 1 && !kivo_request_give_up(answered));
    CHECK(kivo_log_set_sink(NULL, NULL, NULL) == KIVO_OK && sink.releases == 1 && sink.answers == 2);

    kivo_failure* failure = kivo_session_last_failure(session);
    CHECK(failure && failure->code->code == KIVO_CODE_INVALID_STATUS_SESSION && failure->cause.length > 0);
    kivo_failure_free(failure);
}

static void join_at_once(void) {
    struct heard heard;
    kivo_session* session = NULL;
    const kivo_text page = kivo_text_of(getenv("KIVO_JOIN_PAGE"));
    const kivo_deployment deployment = {.size = sizeof deployment, .join_page_test = page};
    const kivo_config config = {.size = sizeof config, .environment = KIVO_ENVIRONMENT_TEST};
    kivo_join_request request = {
        .size = sizeof request, .version = KIVO_TEXT("13"), .config = &config, .deployment = &deployment};
    CHECK(kivo_join(&request, to(&heard), &session) == 0 && session == NULL && heard.releases == 1);
    kivo_string* former = kivo_deployment_join_page(KIVO_ENVIRONMENT_TEST);
    CHECK(strcmp(kivo_string_text(former).data, page.data) != 0); // a mistake installs no deployment
    kivo_string_free(former);
    request.version = KIVO_TEXT("");
    request.activation_code = KIVO_TEXT("000000");
    CHECK(kivo_join(&request, to(&heard), &session) != 0 && session && heard.answers == 0);
    CHECK(kivo_main_run_until(is_answered, &heard, 75000));
    CHECK(heard.code == KIVO_CODE_STATUS_INVALID_ACTIVATION_CODE && heard.kind == KIVO_FAILURE_REFUSED);
    kivo_string* installed = kivo_deployment_join_page(KIVO_ENVIRONMENT_TEST);
    CHECK(strcmp(kivo_string_text(installed).data, page.data) == 0);
    kivo_string_free(installed);
}

int main(void) {
    const kivo_linux_options places = {.size = sizeof places,
                                       .data_folder = kivo_text_of(getenv("KIVO_DATA_FOLDER")),
                                       .trusted_certificates = kivo_text_of(getenv("KIVO_AUTHORITY"))};
    CHECK(kivo_log_set_threshold(KIVO_LOG_WARNING) == KIVO_OK && kivo_log_threshold() == KIVO_LOG_WARNING);
    CHECK(kivo_linux_install(&places) == KIVO_OK && kivo_network_assume() == KIVO_OK);
    kivo_session* session = kivo_session_open(KIVO_TEXT("EXAMPLE-KEY"), KIVO_TEXT("183"));
    CHECK(session && session == kivo_session_open(KIVO_TEXT("EXAMPLE-KEY"), KIVO_TEXT("")));
    names();
    mistakes(session);
    looks(session);
    reports();
    queues(session);
    join_at_once();
    return faults == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
