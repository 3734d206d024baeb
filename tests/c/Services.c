/* A host in C with a main queue and a keychain of its own: joins, reads the status, and resets. */
#define _POSIX_C_SOURCE 200809L

#include <kivo/c/linux.h>
#include <kivo/kivo.h>

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct piece {
    kivo_work work;
    void* argument;
    struct piece* next;
};

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t come = PTHREAD_COND_INITIALIZER;
static struct piece* first = NULL;
static struct piece** last = &first;
static pthread_t main_thread;
static char items[2][65536];
static size_t stored = 0;
static size_t read_back = 0;
static size_t removed = 0;

static void post(void* user, uint64_t delay_nanoseconds, kivo_work work, void* argument) {
    (void)delay_nanoseconds; // nothing here waits
    struct piece* piece = malloc(sizeof *piece);
    *piece = (struct piece){work, argument, NULL};
    pthread_mutex_lock(user);
    *last = piece;
    last = &piece->next;
    pthread_cond_signal(&come);
    pthread_mutex_unlock(user);
}

static bool is_current(void* user) {
    (void)user;
    return pthread_equal(pthread_self(), main_thread);
}

static void run_one(void) {
    pthread_mutex_lock(&lock);
    while (!first) {
        pthread_cond_wait(&come, &lock);
    }
    struct piece* piece = first;
    first = piece->next;
    last = first ? last : &first;
    pthread_mutex_unlock(&lock);
    piece->work(piece->argument);
    free(piece);
}

static char* item_of(kivo_text account) {
    return items[strcmp(account.data, "qr_response") == 0];
}

static kivo_keychain_status set(void* user, kivo_text service, kivo_text account, const void* bytes, size_t length) {
    (void)user;
    if (service.length == 0 || length >= sizeof items[0]) {
        return KIVO_KEYCHAIN_FAILED;
    }
    memcpy(item_of(account), bytes, length);
    item_of(account)[length] = '\0';
    stored += 1;
    return KIVO_KEYCHAIN_OK;
}

static kivo_keychain_status get(void* user, kivo_text service, kivo_text account, kivo_keychain_take take,
                                void* taker) {
    (void)user;
    (void)service;
    const char* value = item_of(account);
    if (value[0] == '\0') {
        return KIVO_KEYCHAIN_NOT_FOUND;
    }
    take(taker, value, strlen(value));
    read_back += 1;
    return KIVO_KEYCHAIN_OK;
}

static kivo_keychain_status take_out(void* user, kivo_text service, kivo_text account) {
    (void)user;
    (void)service;
    removed += item_of(account)[0] != '\0';
    item_of(account)[0] = '\0';
    return KIVO_KEYCHAIN_OK;
}

static void on_answer(void* user, const kivo_outcome* outcome) {
    *(int*)user = outcome->failure ? (int)outcome->failure->code->code : 1;
}

static int wait_for(kivo_request request, const int* answer) {
    while (request != 0 && *answer == 0) {
        run_one();
    }
    return *answer;
}

static bool expect(bool condition, const char* what) {
    if (!condition) {
        printf("not so: %s\n", what);
    }
    return condition;
}

int main(void) {
    main_thread = pthread_self();
    const kivo_linux_options places = {.size = sizeof places,
                                       .main_bundle = kivo_text_of(getenv("KIVO_HOST_BUNDLE")),
                                       .data_folder = kivo_text_of(getenv("KIVO_DATA_FOLDER"))};
    kivo_main_queue queue = {.size = sizeof queue, .user = &lock, .post = post};
    kivo_keychain keychain = {.size = sizeof keychain, .set = set, .get = get};
    kivo_log_set_threshold(KIVO_LOG_OFF);
    kivo_linux_install(&places);
    kivo_network_assume();
    bool good = expect(kivo_main_queue_install(&queue) == KIVO_MISUSE, "a queue needs all its functions") &&
                expect(kivo_keychain_install(&keychain) == KIVO_MISUSE, "a keychain needs all its functions");
    queue.is_current = is_current;
    keychain.remove = take_out;
    good = expect(kivo_main_queue_install(&queue) == KIVO_OK, "the queue is taken") &&
           expect(kivo_keychain_install(&keychain) == KIVO_OK, "the keychain is taken") && good;

    int joined = 0;
    int refused = 0;
    int gone = 0;
    const kivo_text page = kivo_text_of(getenv("KIVO_JOIN_PAGE"));
    const kivo_deployment deployment = {.size = sizeof deployment, .join_page_prod = page};
    const kivo_config config = {.size = sizeof config};
    const kivo_join_request request = {.size = sizeof request,
                                       .key = KIVO_TEXT("EXAMPLE-KEY"),
                                       .activation_code = KIVO_TEXT("123456"),
                                       .config = &config,
                                       .deployment = &deployment};
    kivo_session* session = NULL;
    good =
        expect(wait_for(kivo_join(&request, (kivo_answer){.call = on_answer, .user = &joined}, &session), &joined) == 1,
               "the join succeeds") &&
        good;
    good = expect(stored >= 2 && strstr(items[1], "\"tid\""), "the session is in the host's keychain") && good;
    wait_for(kivo_session_status(session, (kivo_answer){.call = on_answer, .user = &refused}), &refused);
    good = expect(refused == KIVO_CODE_STATUS_BAD_BIODATA && read_back > 0, "the status used the session") && good;
    kivo_session_reset(session);
    wait_for(kivo_session_status(session, (kivo_answer){.call = on_answer, .user = &gone}), &gone);
    good = expect(gone == KIVO_CODE_INVALID_STATUS_SESSION && removed > 0, "the reset deleted the session") && good;
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
