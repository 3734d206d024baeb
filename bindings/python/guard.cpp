// Stands between the library's threads and a host's services in Python. A thread that enters an interpreter which is
// ending is ended itself, in the middle of the library; so the services are closed before the interpreter ends, and
// from then on a call gets an answer without entering the interpreter.

#include <kivo/kivo.h>

#include <pthread.h>

#include <condition_variable>
#include <mutex>

namespace {

std::mutex mutex;
std::condition_variable left;
int inside = 0;
/// The part of `inside` that belongs to the calling thread.
thread_local int insideHere = 0;
bool isClosed = false;
kivo_keychain keychain{};
kivo_main_queue queue{};

/// A call of a service; none once the services are closed.
class Call {
public:
    Call() {
        const std::scoped_lock lock{mutex};
        isOpen_ = !isClosed;
        add(isOpen_ ? 1 : 0);
    }

    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    ~Call() {
        if (isOpen_) {
            const std::scoped_lock lock{mutex};
            add(-1);
            left.notify_all();
        }
    }

    template <class Result, class... Arguments>
    Result make(Result otherwise, Result (*function)(void*, Arguments...), Arguments... arguments) const {
        return isOpen_ ? function(nullptr, arguments...) : otherwise;
    }

    bool isOpen() const { return isOpen_; }

private:
    static void add(int calls) {
        inside += calls;
        insideHere += calls;
    }

    bool isOpen_ = false;
};

/// A forked child has the thread that forked and no other, so the calls of the others never leave there.
[[maybe_unused]] const int watchesForks = pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); },
                                                         [] {
                                                             inside = insideHere;
                                                             mutex.unlock();
                                                         });

} // namespace

extern "C" {

__attribute__((visibility("default"))) kivo_status kivo_guard_keychain(const kivo_keychain* host) {
    keychain = *host;
    const kivo_keychain guarded{
        .size = sizeof guarded,
        .user = nullptr,
        .set =
            [](void*, kivo_text service, kivo_text account, const void* bytes, size_t length) {
                return Call{}.make(KIVO_KEYCHAIN_FAILED, keychain.set, service, account, bytes, length);
            },
        .get =
            [](void*, kivo_text service, kivo_text account, kivo_keychain_take take, void* taker) {
                return Call{}.make(KIVO_KEYCHAIN_FAILED, keychain.get, service, account, take, taker);
            },
        .remove =
            [](void*, kivo_text service, kivo_text account) {
                return Call{}.make(KIVO_KEYCHAIN_FAILED, keychain.remove, service, account);
            }};
    return kivo_keychain_install(&guarded);
}

__attribute__((visibility("default"))) kivo_status kivo_guard_queue(const kivo_main_queue* host) {
    queue = *host;
    const kivo_main_queue guarded{.size = sizeof guarded,
                                  .user = nullptr,
                                  .post =
                                      [](void*, uint64_t delay, kivo_work work, void* argument) {
                                          if (const Call call; call.isOpen()) {
                                              queue.post(nullptr, delay, work, argument);
                                          }
                                      },
                                  .is_current = [](void*) { return Call{}.make(false, queue.is_current); }};
    return kivo_main_queue_install(&guarded);
}

/// Closes the services, and waits for the calls under way.
__attribute__((visibility("default"))) void kivo_guard_close() {
    std::unique_lock lock{mutex};
    isClosed = true;
    left.wait(lock, [] { return inside == 0; });
}
}
