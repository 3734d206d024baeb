// Exits with requests under way. Arguments: how to exit, an address that never answers, one that answers at once, and
// the certificate to trust.

#include "platform/curl/CurlUrlSession.hpp"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <semaphore>
#include <string>

namespace {

std::atomic<bool> exiting{false};

// Registered ahead of the network's own exit handler, and therefore run after it: from then on no completion starts.
void markExiting() {
    exiting = true;
}

void complain(const kivo::platform::UrlOutcome&) {
    if (exiting) {
        std::fputs("a completion started during exit\n", stderr);
        ::_exit(3);
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count != 5) {
        return 2;
    }
    std::atexit(markExiting);
    const std::string how = arguments[1];
    const std::string silent = arguments[2];
    const std::string prompt = arguments[3];
    const auto sessions = kivo::platform::makeCurlUrlSessions(arguments[4]);
    auto* const session = new std::shared_ptr{sessions->make({})};
    auto* const other = new std::shared_ptr{sessions->make({})};
    for (int i = 0; i < 4; ++i) {
        (*session)->dataTask({.url = silent, .method = "POST", .body = "held"}, complain);
        (*other)->dataTask({.url = silent}, complain);
    }
    // Let go just before the end; in the other cases the sessions are never let go, like a host's globals.
    if (how == "return") {
        delete session;
        delete other;
        return 0;
    }
    if (how == "exit-in-completion") {
        (*session)->dataTask({.url = prompt}, [](const auto&) { std::exit(0); });
        std::counting_semaphore<>{0}.acquire();
    }
    if (how == "blocked-completion") {
        static std::counting_semaphore<> begun{0};
        (*session)->dataTask({.url = prompt}, [](const auto&) {
            begun.release();
            std::counting_semaphore<>{0}.acquire();
        });
        begun.acquire();
    }
    std::exit(0);
}
