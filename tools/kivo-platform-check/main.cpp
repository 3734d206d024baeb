#include "PlatformCheck.hpp"
#include "program/CommandLine.hpp"
#include "program/Program.hpp"
#include "program/Temporary.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <expected>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>

namespace {

using kivo::check::Finding;
using kivo::check::Promise;
using kivo::check::Result;

enum ExitStatus { allKept = 0, someBroken = 1, cannotGoOn = 2 };

/// A check that has not ended by then hangs in a call of the services.
constexpr std::chrono::seconds longestCheck{120};

/// From this time on a check's time is worth a word.
constexpr std::chrono::milliseconds slow{500};

constexpr auto purpose =
    "Checks whether the services of this platform keep the promises of the headers in include/kivo/platform: all\n"
    "of them, or those of the seams that are named (such as Keychain or UrlSession). Servers that the checks need\n"
    "run on this machine; data lies in temporary folders. The person's own data, keychain and network stay as\n"
    "they are.\n";

constexpr auto explanation =
    "Each promise has a line: \"ok\" for kept, \"BROKEN\" with what was expected and what came, \"--\" for unchecked,\n"
    "because the machine lacks what the check needs.\n";

struct Options {
    bool list = false;
    std::vector<std::string> seams;

    bool isWanted(const Promise& promise) const {
        return seams.empty() || std::ranges::find(seams, promise.seam) != seams.end();
    }
};

bool isEqualButForCase(const std::string& one, const std::string& other) {
    return std::ranges::equal(
        one, other, [](unsigned char left, unsigned char right) { return std::tolower(left) == std::tolower(right); });
}

/// The options of the command line, or the status to end with when the help was printed or a mistake was told.
std::expected<Options, int> parse(int argc, const char* const* argv) {
    Options options;
    program::CommandLine line{{.name = "kivo-platform-check",
                               .arguments = "[options] [SEAM...]",
                               .purpose = purpose,
                               .statuses = {{allKept, "no promise is broken"},
                                            {someBroken, "one is broken, or standard output could not be written"},
                                            {cannotGoOn, "the command line is wrong"}}}};
    line.flag("--list", options.list, "name the seams and their promises, and check nothing");
    line.arguments([&, all = kivo::check::promises()](const auto& seam) -> std::string {
        const auto found =
            std::ranges::find_if(all, [&](const auto& promise) { return isEqualButForCase(promise.seam, seam); });
        if (found == all.end()) {
            return "there is no seam \"" + seam + "\", and --list names them";
        }
        options.seams.push_back(found->seam);
        return "";
    });
    line.explain(explanation);
    if (const auto status = line.read(argc, argv)) {
        return std::unexpected{*status};
    }
    return options;
}

/// Prints the findings as they come.
class Report {
public:
    void name(const std::string& seam) {
        if (seam != seam_) {
            std::printf("%s%s\n", seam_.empty() ? "" : "\n", seam.c_str());
            seam_ = seam;
        }
    }

    void add(const Finding& finding) {
        ++counts_[static_cast<std::size_t>(finding.result)];
        took_ += finding.took;
        static constexpr const char* marks[] = {"ok", "BROKEN", "--"};
        const auto time = finding.took >= slow ? "  (" + std::to_string(finding.took.count()) + " ms)" : "";
        std::printf("  %-6s  %s%s\n", marks[static_cast<int>(finding.result)], finding.promise.text.c_str(),
                    time.c_str());
        for (const auto& detail : finding.details) {
            std::printf("            %s\n", detail.c_str());
        }
        std::fflush(stdout);
    }

    ExitStatus end() const {
        const auto [kept, broken, unchecked] = counts_;
        std::printf("\n%zu promises: %zu kept, %zu broken, %zu unchecked, in %.1f seconds\n", kept + broken + unchecked,
                    kept, broken, unchecked, static_cast<double>(took_.count()) / 1000);
        std::fflush(stdout);
        return broken == 0 ? allKept : someBroken;
    }

private:
    std::string seam_;
    std::array<std::size_t, 3> counts_{};
    std::chrono::milliseconds took_{0};
};

/// Keeps what the services have to say until their check has ended: it explains a broken promise, and else it is about
/// faults that the check makes itself.
class Remarks final : public kivo::platform::Diagnostics {
public:
    void report(std::string_view component, std::string_view text) override {
        const std::scoped_lock lock{mutex_};
        remarks_.push_back("the services say: " + std::string{component} + ": " + std::string{text});
    }

    std::vector<std::string> take() {
        const std::scoped_lock lock{mutex_};
        return std::exchange(remarks_, {});
    }

private:
    std::mutex mutex_;
    std::vector<std::string> remarks_;
};

/// Ends the program when a check does not come to its end.
class Watchdog {
public:
    explicit Watchdog(Report& report)
        : report_{report}
        , thread_{[this](const std::stop_token& stop) { watch(stop); }} {}

    void begin(const Promise& promise) {
        const std::scoped_lock lock{mutex_};
        current_ = promise;
        deadline_ = std::chrono::steady_clock::now() + longestCheck;
    }

private:
    void watch(const std::stop_token& stop) {
        std::unique_lock lock{mutex_};
        while (!stop.stop_requested()) {
            // A copy: `begin` changes the deadline while this thread waits.
            const auto until = deadline_;
            changed_.wait_until(lock, stop, until, [] { return false; });
            if (stop.stop_requested()) {
                return;
            }
            if (std::chrono::steady_clock::now() >= deadline_) {
                report_.add({.promise = current_,
                             .result = Result::broken,
                             .details = {"a call of the services did not return within " +
                                             std::to_string(longestCheck.count()) + " seconds",
                                         "the checks end here"}});
                program::endAtOnce(report_.end());
            }
        }
    }

    Report& report_;
    std::mutex mutex_;
    std::condition_variable_any changed_;
    Promise current_;
    std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::now() + longestCheck;
    std::jthread thread_;
};

ExitStatus run(const Options& options) {
    Report report;
    if (options.list) {
        for (const auto& promise : kivo::check::promises()) {
            if (options.isWanted(promise)) {
                report.name(promise.seam);
                std::printf("  %s\n", promise.text.c_str());
            }
        }
        return allKept;
    }
    const auto remarks = std::make_shared<Remarks>();
    kivo::platform::Services heard;
    heard.diagnostics = remarks;
    kivo::platform::install(std::move(heard));
    Watchdog watchdog{report};
    check(kivo::check::builtPlatform(), [&](const auto& promise) { return options.isWanted(promise); },
          {.onBegin =
               [&](const auto& promise) {
                   report.name(promise.seam);
                   watchdog.begin(promise);
               },
           .onEnd =
               [&](auto finding) {
                   auto said = remarks->take();
                   if (finding.result == Result::broken) {
                       std::ranges::move(said, std::back_inserter(finding.details));
                   }
                   report.add(finding);
               }});
    return report.end();
}

} // namespace

int main(int argc, char** argv) {
    return program::run("kivo-platform-check", [&]() -> int {
        const auto options = parse(argc, argv);
        if (!options) {
            return options.error();
        }
        const program::TemporaryFolder folder{"kivo-platform-check"};
        return folder.holding([&] { return run(*options); });
    });
}
