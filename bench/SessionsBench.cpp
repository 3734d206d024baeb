// Whole sessions one after another in one process: code screen, join, document, face, ID card, update, upload, status,
// commit, reset. Prints memory and open files along the way, and fails when either grows after the first tenth. The
// simulated service, which remembers everything, works in a process of its own.
//
// usage: kivo-bench-sessions [SESSIONS]
#include "Measuring.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Person.hpp>
#include <kivo/simulator/Reachability.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace kivo;
using namespace std::chrono_literals;
using bench::giveUp;

// The heap's own book-keeping and the vendors' last records take less than this.
constexpr long toleratedGrowth = 64 * 1024;

struct Usage {
    long heapBytes;
    long openFiles;
};

Usage usage() {
    long openFiles = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator{"/proc/self/fd"}) {
        ++openFiles;
    }
    const auto heap = mallinfo2();
    return {.heapBytes = static_cast<long>(heap.uordblks + heap.hblkhd), .openFiles = openFiles};
}

// One machine with its host application. The clock of the main queue is driven by hand, so that no delay of a screen
// takes real time.
class Host {
public:
    Host(const std::filesystem::path& folder, const std::string& joinPage, const std::string& trustedCertificates) {
        auto services = platform::linuxServices(
            {.mainBundle = {}, .dataFolder = folder, .trustedCertificates = trustedCertificates});
        services.reachability = std::make_shared<simulator::Reachability>();
        services.mainQueue = loop_;
        services.faceTec = faceTec_;
        services.readID = readID_;
        platform::install(services);
        Deployment::install({.joinPages = {joinPage, joinPage, joinPage, joinPage}});
        window_->setRootViewController(navigation_);
    }

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() = default;

    void walk() {
        const auto session = KivoSDK::load("BENCH", "18");
        session->setContext(start_);
        std::string code;
        step("code", [&](auto answer) {
            session->acquire(AcquisitionObject::activationCode, config_, [&, answer](const IdvOutcome& outcome) {
                code = outcome ? (*outcome)->data() : "";
                answer(outcome);
            });
            if (const auto typed = person_.type("textFieldDigitOne", "123456"); !typed) {
                giveUp(typed.error());
            }
        });
        step("join", [&](auto answer) { session->join(code, config_, answer); });
        scan(*session, AcquisitionObject::nfcScan, "passportOptionContainerView");
        scan(*session, AcquisitionObject::facemapScan, "nextButton");
        scan(*session, AcquisitionObject::ocrScan, "");
        step("update", [&](auto answer) { session->update("inform", "benchmark", answer); });
        step("upload", [&](auto answer) { session->upload(AcquisitionObject::documentMainImage, image_, answer); });
        step("status", [&](auto answer) { session->status(answer); });
        step("commit", [&](auto answer) { session->commit(answer); });
        navigation_->popToViewController(start_, /*animated=*/true);
        session->reset();
        session->setContext(nullptr);
        // Pending delays fire, and find no screen.
        clock_->advance(1min);
        loop_->drain();
    }

    // Gives up when a vendor has seen a violation, and drops the records that vendors keep for tests.
    void forget() {
        if (!faceTec_->violations().empty()) {
            giveUp(faceTec_->violations().front());
        }
        faceTec_->forgetSessions();
        readID_->forgetSessions();
    }

private:
    template <class Call>
    void step(const char* name, const Call& call) {
        const auto outcome = std::make_shared<std::optional<IdvOutcome>>();
        call([outcome, loop = loop_](const IdvOutcome& answered) {
            loop->async([outcome, answered] { *outcome = answered; });
        });
        const auto limit = std::chrono::steady_clock::now() + 20s;
        while (!*outcome) {
            loop_->runUntil([&] { return outcome->has_value(); }, 1ms);
            clock_->advance(20ms);
            if (std::chrono::steady_clock::now() > limit) {
                giveUp(std::string{"no answer to "} + name);
            }
        }
        if (!**outcome) {
            giveUp(std::string{name} + " ended in " + std::string{kivo::name((*outcome)->error())});
        }
    }

    void scan(KivoAPI& session, AcquisitionObject object, std::string_view button) {
        navigation_->popToViewController(start_, /*animated=*/true);
        loop_->drain();
        step("a scan", [&](auto answer) {
            session.acquire(object, config_, answer);
            if (!button.empty()) {
                if (const auto tapped = person_.tap(button); !tapped) {
                    giveUp(tapped.error());
                }
            }
        });
    }

    std::shared_ptr<platform::ManualClock> clock_ = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> loop_ = std::make_shared<platform::RunLoop>(clock_);
    std::shared_ptr<simulator::FaceTec> faceTec_ = std::make_shared<simulator::FaceTec>();
    std::shared_ptr<simulator::ReadID> readID_ = std::make_shared<simulator::ReadID>();
    std::shared_ptr<platform::ViewController> start_ = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation_ =
        std::make_shared<platform::NavigationController>(start_);
    std::shared_ptr<platform::Window> window_ = std::make_shared<platform::Window>();
    simulator::Person person_{window_, loop_, clock_};
    std::shared_ptr<AcquisitionConfig> config_ =
        std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT,ID_CARD", "P6M", "0.8", "UTO", "face");
    std::string image_ = std::string(std::size_t{48} * 1024, 'A');
};

// The host's process. Its findings go to standard error: standard output is the SDK's.
int walkSessions(int sessions, const char* folder, const char* joinPage, const char* trustedCertificates) {
    KivoSDK::setLogLevel(LogLevel::error);
    Host host{folder, joinPage, trustedCertificates};
    bool isSteady = true;
    std::optional<Usage> first;
    const auto start = std::chrono::steady_clock::now();
    const int stretch = std::max(1, sessions / 10);
    for (int done = 1; done <= sessions; ++done) {
        host.walk();
        if (done % stretch != 0) {
            continue;
        }
        host.forget();
        const auto now = usage();
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::fprintf(stderr, "%5d sessions  %6.1f s  heap %6ld KiB  open files %3ld\n", done, took.count(),
                     now.heapBytes / 1024, now.openFiles);
        bench::point("sessions", "heap in KiB", done, static_cast<double>(now.heapBytes) / 1024);
        first = first.value_or(now);
        isSteady = isSteady && now.heapBytes <= first->heapBytes + toleratedGrowth && now.openFiles <= first->openFiles;
    }
    bench::found("growth after the first tenth of the sessions", isSteady ? 0 : 1);
    std::fprintf(stderr, "%s after the first tenth\n", isSteady ? "no growth" : "GROWTH");
    return isSteady ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 6 && argv[1] == std::string_view{"host"}) {
        return walkSessions(std::atoi(argv[2]), argv[3], argv[4], argv[5]);
    }
    const std::string sessions = argc > 1 ? argv[1] : "1000";
    const bench::TemporaryFolder folder;
    simulator::IdentityServiceConfiguration configuration;
    configuration.retryLimit = 10;
    const simulator::IdentityService service{std::move(configuration)};
    const auto command = std::filesystem::read_symlink("/proc/self/exe").string() + " host " + sessions + ' ' +
                         folder.path().string() + ' ' + service.joinPage() + ' ' +
                         service.trustedCertificates().string() + " >/dev/null";
    const int ended = std::system(command.c_str());
    if (!service.violations().empty()) {
        giveUp(service.violations().front());
    }
    return ended == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
