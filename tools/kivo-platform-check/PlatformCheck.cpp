#include "PlatformCheck.hpp"

#include "Trial.hpp"

#include <cstdlib>
#include <exception>
#include <system_error>

namespace kivo::check {
namespace {

namespace fs = std::filesystem;

/// A folder for one check, gone with the object.
class CheckFolder {
public:
    CheckFolder() {
        auto pattern = (fs::temp_directory_path() / "kivo-platform-check-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error{"no folder can be made below " + fs::temp_directory_path().string()};
        }
        path_ = pattern;
    }

    CheckFolder(const CheckFolder&) = delete;
    CheckFolder& operator=(const CheckFolder&) = delete;

    ~CheckFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

Checks allChecks() {
    Checks all;
    for (const auto checks :
         {servicesChecks,     mainQueueChecks,  runLoopChecks,      serialQueueChecks, clockChecks,
          notificationChecks, textChecks,       urlChecks,          keychainChecks,    trustChecks,
          urlAnswerChecks,    urlRequestChecks, urlTaskChecks,      urlDelegateChecks, bundleChecks,
          deviceChecks,       fontsChecks,      reachabilityChecks, workspaceChecks,   cameraChecks}) {
        for (auto& each : checks()) {
            all.push_back(std::move(each));
        }
    }
    return all;
}

Finding checked(const Check& each, const ServicesUnderTest& underTest) {
    Finding finding{.promise = {each.seam, each.promise}};
    const auto start = std::chrono::steady_clock::now();
    try {
        const CheckFolder folder;
        Trial trial{underTest, folder.path(), finding};
        each.run(trial);
    } catch (const Unchecked& unchecked) {
        if (finding.result == Result::kept) {
            finding.result = Result::unchecked;
            finding.details = {unchecked.what()};
        }
    } catch (const std::exception& thrown) {
        finding.result = Result::broken;
        finding.details.push_back(std::string{"an exception came: "} + thrown.what());
    }
    finding.took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    return finding;
}

} // namespace

std::vector<Promise> promises() {
    std::vector<Promise> all;
    for (auto& each : allChecks()) {
        all.push_back({std::move(each.seam), std::move(each.promise)});
    }
    return all;
}

std::vector<Finding> check(const ServicesUnderTest& underTest, const std::function<bool(const Promise&)>& isWanted,
                           const Progress& progress) {
    std::vector<Finding> findings;
    for (const auto& each : allChecks()) {
        const Promise promise{each.seam, each.promise};
        if (isWanted && !isWanted(promise)) {
            continue;
        }
        if (progress.onBegin) {
            progress.onBegin(promise);
        }
        findings.push_back(checked(each, underTest));
        if (progress.onEnd) {
            progress.onEnd(findings.back());
        }
    }
    return findings;
}

} // namespace kivo::check
