// The road join, update, status, commit through the SDK, beside the same four POSTs from a bare libcurl loop that
// reuses its connection. Both talk to the same simulated identity service, in turns, in one process: first with
// answers that come at once, which shows what the SDK costs (a join waits twice for the disk), then with answers as
// late as over a good mobile network, which shows what of that a person would notice.
//
// usage: kivo-bench-road [ROUNDS]. The figures go to standard error: standard output is the SDK's, and here nobody's.
#include "Allocations.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr auto endpoints = {simulator::Endpoint::join, simulator::Endpoint::update, simulator::Endpoint::status,
                            simulator::Endpoint::commit};

constexpr std::chrono::milliseconds answerDelay{20};

struct Post {
    std::string url;
    std::string body;
};

[[noreturn]] void giveUp(const char* why) {
    std::fprintf(stderr, "kivo-bench-road: %s\n", why);
    std::exit(EXIT_FAILURE);
}

/// Makes one call of the SDK and waits for its success.
template <class Call>
void await(const Call& call) {
    std::mutex mutex;
    std::condition_variable changed;
    int answered = 0;
    call([&](const IdvOutcome& outcome) {
        // Notified under the lock: the waiting side's stack must not go before this returns.
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

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

template <class Run>
double timed(const Run& run) {
    const auto start = Clock::now();
    run();
    return Microseconds{Clock::now() - start}.count();
}

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
        const auto before = bench::allocations();
        sdkTimes.push_back(timed([&] { walk(session, config); }));
        allocated += bench::allocations() - before;
        bareTimes.push_back(timed([&] { bare.run(); }));
        platform::RunLoop::main()->drain();
    }
    const double sdk = median(sdkTimes);
    const double loop = median(bareTimes);
    std::fprintf(stderr, "road of 4 requests, %d rounds, answers %lld ms late, medians\n", rounds,
                 static_cast<long long>(delay.count()));
    std::fprintf(stderr, "  SDK        %8.1f us\n  bare loop  %8.1f us\n  ratio      %8.3f\n", sdk, loop, sdk / loop);
    std::fprintf(stderr, "  more       %8.1f us a request\n", (sdk - loop) / 4.0);
    std::fprintf(stderr, "  allocations with new: %.0f a request, the simulated service's share included\n",
                 static_cast<double>(allocated) / (4.0 * rounds));
}

} // namespace

int main(int argc, char** argv) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        giveUp("cannot put the SDK's own lines aside");
    }
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 200;
    auto pattern = (std::filesystem::temp_directory_path() / "kivo-bench-XXXXXX").string();
    const std::filesystem::path folder{mkdtemp(pattern.data())};

    simulator::IdentityService service;
    auto services = platform::linuxServices(
        {.mainBundle = {}, .dataFolder = folder, .trustedCertificates = service.trustedCertificates()});
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
    std::filesystem::remove_all(folder);
    return EXIT_SUCCESS;
}
