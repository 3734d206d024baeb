// A host in C that walks a session with its own loop: join, status, update, upload, commit, reset.
//
// The identity service comes from the environment: KIVO_JOIN_PAGE, KIVO_ACTIVATION_CODE, and KIVO_HOST_BUNDLE, the
// folder with the list of pins (readid_certificates.plist). KIVO_DATA_FOLDER is where the session is kept.
#define _POSIX_C_SOURCE 200809L // poll

#include <kivo/c/linux.h>
#include <kivo/kivo.h>

#include <poll.h>
#include <stdio.h>
#include <stdlib.h>

struct walk {
    kivo_session* session;
    size_t step;
    bool has_ended;
};

typedef kivo_request (*step_function)(struct walk* walk, kivo_answer answer);

struct step {
    const char* name;
    step_function begin;
    bool is_given_up;
};

static kivo_text setting(const char* name, const char* otherwise) {
    const char* value = getenv(name);
    return kivo_text_of(value ? value : otherwise);
}

static kivo_request join(struct walk* walk, kivo_answer answer) {
    const kivo_config config = {
        .size = sizeof config, .environment = KIVO_ENVIRONMENT_TEST, .document_list = KIVO_TEXT("PASSPORT")};
    return kivo_session_join(walk->session, setting("KIVO_ACTIVATION_CODE", "123456"), &config, answer);
}

static kivo_request status(struct walk* walk, kivo_answer answer) {
    return kivo_session_status(walk->session, answer);
}

static kivo_request update(struct walk* walk, kivo_answer answer) {
    return kivo_session_update(walk->session, KIVO_TEXT("inform"), KIVO_TEXT("The person has read the terms."), answer);
}

static kivo_request upload(struct walk* walk, kivo_answer answer) {
    return kivo_session_upload(walk->session, KIVO_OBJECT_SELFIE_IMAGE, KIVO_TEXT("c2VsZmll"), answer);
}

static kivo_request commit(struct walk* walk, kivo_answer answer) {
    return kivo_session_commit(walk->session, answer);
}

// The second status may well be refused: the service has not seen the evidence yet.
static const struct step steps[] = {
    {"join", join, false},    {"status", status, false}, {"status", status, false}, {"update", update, false},
    {"update", update, true}, {"upload", upload, false}, {"commit", commit, false},
};

static void begin_step(struct walk* walk);

// Runs on the main queue, that is, inside kivo_main_drain().
static void on_answer(void* user, const kivo_outcome* outcome) {
    struct walk* walk = user;
    if (outcome->failure) {
        printf("%s: %s (%s): %s\n", steps[walk->step].name, outcome->failure->code->name.data,
               kivo_failure_kind_name(outcome->failure->kind).data, outcome->failure->cause.data);
    } else {
        printf("%s: %s\n", steps[walk->step].name, kivo_event_name(outcome->event).data);
    }
    if ((walk->step == 0 && outcome->failure) || walk->step + 1 == sizeof steps / sizeof steps[0]) {
        walk->has_ended = true;
        return;
    }
    walk->step += 1;
    begin_step(walk);
}

static void begin_step(struct walk* walk) {
    const struct step* step = &steps[walk->step];
    const kivo_request request = step->begin(walk, (kivo_answer){.call = on_answer, .user = walk});
    if (request == 0) {
        walk->has_ended = true; // a mistake of this program; the library has told which on standard error
    } else if (step->is_given_up) {
        kivo_request_give_up(request); // the person leaves the page: the answer comes at once
    }
}

int main(void) {
    const kivo_linux_options places = {.size = sizeof places,
                                       .main_bundle = setting("KIVO_HOST_BUNDLE", ""),
                                       .data_folder = setting("KIVO_DATA_FOLDER", "")};
    const kivo_deployment deployment = {.size = sizeof deployment,
                                        .join_page_test =
                                            setting("KIVO_JOIN_PAGE", "https://test.identity.example/join.html"),
                                        .requires_pins = getenv("KIVO_HOST_BUNDLE") != NULL};
    if (kivo_log_set_threshold(KIVO_LOG_OFF) != KIVO_OK || kivo_linux_install(&places) != KIVO_OK ||
        kivo_network_assume() != KIVO_OK || kivo_deployment_install(&deployment) != KIVO_OK) {
        return EXIT_FAILURE;
    }

    struct walk walk = {.session = kivo_session_open(KIVO_TEXT("EXAMPLE-KEY"), KIVO_TEXT("18"))};
    begin_step(&walk);
    while (!walk.has_ended) {
        struct pollfd library = {.fd = kivo_main_descriptor(), .events = POLLIN};
        poll(&library, 1, -1); // a host's own descriptors stand beside the library's
        kivo_main_drain();
    }
    kivo_session_reset(walk.session);
    return walk.step + 1 == sizeof steps / sizeof steps[0] ? EXIT_SUCCESS : EXIT_FAILURE;
}
