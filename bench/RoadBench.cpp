// The time of join, update, status and commit through the SDK, beside the same four POSTs from a bare libcurl loop that
// reuses its connection. Both talk to the same simulated identity service, in turns, in one process. Answers come at
// once in the first part, which shows the cost of the SDK (a join waits twice for the disk), and as late as over a good
// mobile network in the second part, which shows how much of that cost a person notices.
//
// usage: kivo-bench-road [ROUNDS]. The figures go to standard error: standard output is the SDK's, and is thrown away.
#include "Measuring.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using bench::giveUp;

constexpr auto endpoints = {simulator::Endpoint::join, simulator::Endpoint::update, simulator::Endpoint::status,
                            simulator::Endpoint::commit};

constexpr std::chrono::milliseconds answerDelay{20};

/// The number of the process's calls of `new` so far, on all threads.
std::atomic<std::uint64_t> allocations = 0;

struct Post {
    std::string url;
    std::string body;
};

/// Makes one call of the SDK and waits for its success.
template <class Call>
void await(const Call& call) {
    std::mutex mutex;
    std::condition_variable changed;
    int answered = 0;
    call([&](const IdvOutcome& outcome) {
        // Notified under the lock: the variables are on the waiting side's stack, which ends with the wait.
        const std::scoped_lock lock{mutex};
        answered = outcome ? 1 : -1;
        changed.notify_one();
    });
    std::unique_lock lock{mutex};
    changed.wait(lock, [&] { return answered != 0; });
    if (answered < 0) {
        giveUp("a step of the road failed");
    }
}

void walk(KivoAPI& session, const std::shared_ptr<AcquisitionConfig>& config) {
    await([&](auto response) { session.join("123456", config, response); });
    await([&](auto response) { session.update("inform", "benchmark", response); });
    await([&](auto response) { session.status(response); });
    await([&](auto response) { session.commit(response); });
}

class BareLoop {
public:
    BareLoop(const std::string& trustedCertificates, std::vector<Post> posts)
        : posts_{std::move(posts)} {
        curl_easy_setopt(curl_, CURLOPT_CAINFO, trustedCertificates.c_str());
        curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, headers_);
        curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, collect);
        curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &answer_);
    }

    BareLoop(const BareLoop&) = delete;
    BareLoop& operator=(const BareLoop&) = delete;

    ~BareLoop() {
        curl_easy_cleanup(curl_);
        curl_slist_free_all(headers_);
    }

    void run() {
        for (const auto& post : posts_) {
            answer_.clear();
            curl_easy_setopt(curl_, CURLOPT_URL, post.url.c_str());
            curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, post.body.data());
            curl_easy_setopt(curl_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(post.body.size()));
            if (curl_easy_perform(curl_) != CURLE_OK || !answer_.contains("\"data\"")) {
                giveUp("the bare loop was refused");
            }
        }
    }

private:
    static std::size_t collect(char* bytes, std::size_t size, std::size_t count, void* target) {
        static_cast<std::string*>(target)->append(bytes, size * count);
        return size * count;
    }

    std::vector<Post> posts_;
    CURL* curl_ = curl_easy_init();
    curl_slist* headers_ =
        curl_slist_append(curl_slist_append(nullptr, "Content-Type: application/json; charset=UTF-8"), "Expect:");
    std::string answer_;
};

std::vector<Post> recordedPosts(const simulator::IdentityService& service) {
    std::vector<Post> posts;
    for (const auto& request : service.requests()) {
        const auto base = service.joinPage().substr(0, service.joinPage().find('/', 8));
        posts.push_back({base + request.path, request.body});
    }
    return posts;
}

void compare(int rounds, std::chrono::milliseconds delay, KivoAPI& session,
             const std::shared_ptr<AcquisitionConfig>& config, BareLoop& bare) {
    std::vector<double> sdkTimes;
    std::vector<double> bareTimes;
    std::uint64_t allocated = 0;
    for (int i = 0; i < rounds; ++i) {
        const auto before = allocations.load();
        sdkTimes.push_back(bench::timed([&] { walk(session, config); }));
        allocated += allocations - before;
        bareTimes.push_back(bench::timed([&] { bare.run(); }));
        platform::RunLoop::main()->drain();
    }
    const double sdk = bench::median(sdkTimes) * 1000;
    const double loop = bench::median(bareTimes) * 1000;
    std::fprintf(stderr, "road of 4 requests, %d rounds, answers %lld ms late, medians\n", rounds,
                 static_cast<long long>(delay.count()));
    std::fprintf(stderr, "  SDK        %8.1f us\n  bare loop  %8.1f us\n  ratio      %8.3f\n", sdk, loop, sdk / loop);
    std::fprintf(stderr, "  more       %8.1f us a request\n", (sdk - loop) / 4.0);
    std::fprintf(stderr, "  allocations with new: %.0f a request, the simulated service's share included\n",
                 static_cast<double>(allocated) / (4.0 * rounds));
}

} // namespace

// Not inlined: GCC takes an inlined pair for a mismatch of new and free.
[[gnu::noinline]] void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc{};
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

int main(int argc, char** argv) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        giveUp("cannot put the SDK's own lines aside");
    }
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 200;
    const bench::TemporaryFolder folder;
    simulator::IdentityService service;
    auto services = platform::linuxServices(
        {.mainBundle = {}, .dataFolder = folder.path(), .trustedCertificates = service.trustedCertificates()});
    services.reachability = std::make_shared<simulator::Reachability>();
    platform::install(services);
    const auto page = service.joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});
    KivoSDK::setLogLevel(LogLevel::error);
    const auto session = KivoSDK::load("BENCH", "18");
    const auto config = std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face");

    walk(*session, config);
    BareLoop bare{service.trustedCertificates().string(), recordedPosts(service)};
    bare.run();
    compare(rounds, {}, *session, config, bare);
    for (const auto endpoint : endpoints) {
        service.inject(endpoint, simulator::Fault::delay(answerDelay));
    }
    compare(std::max(1, rounds / 4), answerDelay, *session, config, bare);
    return EXIT_SUCCESS;
}
