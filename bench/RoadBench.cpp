// The time of join, update, status and commit through the SDK, beside the same four POSTs from bare libcurl: from a
// loop on one thread that reuses its connection, and from an equal road of threads, with a multi handle on a thread of
// its own that hands the answers to a second thread. All talk, in turns, to one simulated identity service in a process
// of its own.
//
// Parts: with the disk, with a disk that answers at once, and with answers as late as over a good mobile network. The
// program counts its calls of `new` and its waits for the disk.
//
// usage: kivo-bench-road [ROUNDS]. The figures go to standard error: standard output is the SDK's, and is thrown away.
#include "BareCurl.hpp"
#include "BenchHost.hpp"
#include "Measuring.hpp"
#include "ServiceProcess.hpp"

#include <kivo/kivo.hpp>

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using namespace kivo::bench;

/// The number of the process's calls of `new` so far, on all threads.
std::atomic<std::uint64_t> allocations = 0;

/// The number of the process's waits for a disk so far.
std::atomic<std::uint64_t> syncs = 0;
std::atomic<bool> diskAnswersAtOnce = false;

int waitForDisk(long call, int file) {
    syncs.fetch_add(1, std::memory_order_relaxed);
    return diskAnswersAtOnce ? 0 : static_cast<int>(syscall(call, file));
}

/// Makes one call of the SDK and waits for its success.
template <class Call>
void await(const Call& call) {
    Answered answered;
    call([&](const IdvOutcome& outcome) { answered.tell(outcome.has_value()); });
    answered.await("a step of the road failed");
}

void walk(KivoAPI& session, const std::shared_ptr<AcquisitionConfig>& config) {
    await([&](auto response) { session.join("123456", config, response); });
    await([&](auto response) { session.update("inform", "benchmark", response); });
    await([&](auto response) { session.status(response); });
    await([&](auto response) { session.commit(response); });
}

struct Roads {
    KivoAPI& session;
    std::shared_ptr<AcquisitionConfig> config;
    std::vector<Post> posts;
    Handle& handle;
    BareThreads& threads;
};

struct Compared {
    /// The SDK's time by that of each bare road.
    double byLoop;
    double byThreads;
    /// In microseconds, beside the bare loop.
    double moreARequest;
};

Compared compare(const char* part, int rounds, Roads& roads) {
    std::vector<double> sdkTimes;
    std::vector<double> loopTimes;
    std::vector<double> threadTimes;
    std::uint64_t allocated = 0;
    std::uint64_t waited = 0;
    for (int i = 0; i < rounds; ++i) {
        const auto before = allocations.load();
        const auto syncsBefore = syncs.load();
        sdkTimes.push_back(timed([&] { walk(roads.session, roads.config); }));
        allocated += allocations - before;
        waited += syncs - syncsBefore;
        loopTimes.push_back(timed([&] { runLoop(roads.handle, roads.posts); }));
        threadTimes.push_back(timed([&] { roads.threads.run(roads.posts); }));
        platform::RunLoop::main()->drain();
    }
    const double sdk = median(sdkTimes) * 1000;
    const double loop = median(loopTimes) * 1000;
    const double threads = median(threadTimes) * 1000;
    std::fprintf(stderr, "road of 4 requests, %d rounds, %s, medians\n", rounds, part);
    std::fprintf(stderr, "  SDK            %8.1f us\n", sdk);
    std::fprintf(stderr, "  bare loop      %8.1f us   ratio %6.3f   %6.1f us more a request\n", loop, sdk / loop,
                 (sdk - loop) / 4.0);
    std::fprintf(stderr, "  bare threads   %8.1f us   ratio %6.3f   %6.1f us more a request\n", threads, sdk / threads,
                 (sdk - threads) / 4.0);
    const double allocationsARequest = static_cast<double>(allocated) / (4.0 * rounds);
    const double waitsARoad = static_cast<double>(waited) / rounds;
    std::fprintf(stderr, "  the SDK calls new %.0f times a request, and waits %.1f times a road for the disk\n",
                 allocationsARequest, waitsARoad);
    found("waits for the disk a join", waitsARoad);
    found("calls of new a request", allocationsARequest);
    return {.byLoop = sdk / loop, .byThreads = sdk / threads, .moreARequest = (sdk - loop) / 4.0};
}

/// The time that a call keeps its caller, and that of bare threads, which is little more than the waking of a thread.
/// The answers are awaited outside the measured time.
void measureCaller(int rounds, KivoAPI& session, BareThreads& threads, const Post& post) {
    std::vector<double> times;
    std::vector<double> bareTimes;
    for (int i = 0; i < rounds; ++i) {
        Answered answered;
        times.push_back(
            timed([&] { session.status([&](const IdvOutcome& outcome) { answered.tell(outcome.has_value()); }); }));
        answered.await("a status failed");
        Answered bare;
        bareTimes.push_back(timed([&] { threads.order(post, bare); }));
        bare.await("the bare threads were refused");
    }
    const double caller = median(times) * 1000;
    std::fprintf(stderr,
                 "a call of status keeps its caller for %.1f us, a post of the bare threads for %.1f us (medians)\n",
                 caller, median(bareTimes) * 1000);
    found("time of a call for its caller", caller);
}

} // namespace

// Visible, so that SQLite calls these in place of those of the C library.
extern "C" [[gnu::visibility("default")]] int fsync(int file) {
    return waitForDisk(SYS_fsync, file);
}

extern "C" [[gnu::visibility("default")]] int fdatasync(int file) {
    return waitForDisk(SYS_fdatasync, file);
}

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
    // Forked before this process has threads.
    ServiceProcess service;
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        giveUp("cannot put the SDK's own lines aside");
    }
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 200;
    const TemporaryFolder folder;
    const auto session = loadAgainst(service, folder.path());
    const auto config = std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face");

    walk(*session, config);
    Handle forLoop{service.trustedCertificates};
    Handle forThreads{service.trustedCertificates};
    BareThreads threads{forThreads};
    Roads roads{*session, config, service.posts(), forLoop, threads};
    runLoop(forLoop, roads.posts);
    threads.run(roads.posts);
    compare("answers at once", rounds, roads);
    diskAnswersAtOnce = true;
    const auto atOnce = compare("answers and disk at once", rounds, roads);
    found("time of a request beside a bare loop", atOnce.moreARequest);
    found("road beside bare threads", atOnce.byThreads);
    measureCaller(rounds * 4, *session, threads, roads.posts.back());
    service.delayAnswers();
    found("road with late answers beside a bare loop",
          compare("disk at once, answers 20 ms late", std::max(1, rounds / 4), roads).byLoop);
    return EXIT_SUCCESS;
}
