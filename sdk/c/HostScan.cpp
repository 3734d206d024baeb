#include "c/HostScan.hpp"

#include "platform/base/Process.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/platform/Services.hpp>

#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace kivo::c {
namespace {

class Verdict;

} // namespace
} // namespace kivo::c

struct kivo_scan {
    kivo_face_scanner scanner;
    kivo::c::ScanDelegate delegate;
    std::weak_ptr<kivo::platform::ViewController> screen;
    /// Of the last result that the host submitted.
    std::shared_ptr<kivo::c::Verdict> verdict;
};

namespace kivo::c {
namespace {

constexpr std::size_t mostImages = 16;
constexpr std::size_t mostBytes = std::size_t{64} << 20;

using Scans = std::map<kivo_scan*, std::shared_ptr<kivo_scan>>;

/// The scans that the host has not ended yet. Main thread.
Scans& scans() {
    return platform::Process::current().part<Scans>([] { return new Scans; });
}

const std::shared_ptr<kivo_scan>& scanOf(kivo_scan* handle) {
    const auto found = scans().find(notNull(handle, "scan"));
    if (found == scans().end()) {
        throw Misuse{"scan is not under way"};
    }
    return found->second;
}

/// A result of either kind of scan.
class HostResult final : public platform::FaceTecSessionResult, public platform::FaceTecIDScanResult {
public:
    explicit HostResult(const kivo_scan_result& given)
        : status_{given.status}
        , images_{imagesOf(given.images, given.image_count)}
        , otherImages_{imagesOf(given.other_images, given.other_image_count)} {
        if (auto id = bounded(given.session_id, "session_id"); !id.empty()) {
            sessionId_ = std::move(id);
        }
        if (auto scan = bounded(given.scan, "scan"); !scan.empty()) {
            scan_ = std::move(scan);
        }
    }

    int status() const override { return status_; }

    std::optional<std::string> sessionId() const override { return sessionId_; }

    const std::optional<std::string>& faceScanBase64() const override { return scan_; }

    const std::optional<std::string>& idScanBase64() const override { return scan_; }

    const std::vector<std::string>& auditTrailCompressedBase64() const override { return images_; }

    const std::vector<std::string>& frontImagesCompressedBase64() const override { return images_; }

    const std::vector<std::string>& lowQualityAuditTrailCompressedBase64() const override { return otherImages_; }

    const std::vector<std::string>& backImagesCompressedBase64() const override { return otherImages_; }

    std::string description() const override { return "a scan of the host with status " + std::to_string(status_); }

private:
    static std::string bounded(kivo_text text, const char* what) {
        auto whole = stringOf(text, what);
        if (whole.size() > mostBytes) {
            throw Misuse{std::string{what} + " has more than 64 MiB"};
        }
        return whole;
    }

    static std::vector<std::string> imagesOf(const kivo_text* images, std::size_t count) {
        if (count > mostImages || (images == nullptr && count != 0)) {
            throw Misuse{"images are null or more than 16"};
        }
        std::vector<std::string> all;
        all.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            all.push_back(bounded(images[i], "an image"));
        }
        return all;
    }

    int status_;
    std::optional<std::string> sessionId_;
    std::optional<std::string> scan_;
    std::vector<std::string> images_;
    std::vector<std::string> otherImages_;
};

/// Tells the host the verdict on one result, once; nothing after the scan has ended or another result was submitted.
class Verdict final : public platform::FaceTecFaceScanResultCallback, public platform::FaceTecIDScanResultCallback {
public:
    explicit Verdict(const std::shared_ptr<kivo_scan>& scan)
        : scan_{scan} {}

    bool onFaceScanResultProceedToNextStep(const std::string& blob) override { return proceed(blob); }

    bool onIDScanResultProceedToNextStep(const std::string& blob) override { return proceed(blob); }

    void onFaceScanResultCancel() override { cancel(); }

    void onIDScanResultCancel() override { cancel(); }

    void onFaceScanUploadProgress(float fraction) override { tellProgress(fraction); }

    void onIDScanUploadProgress(float fraction) override { tellProgress(fraction); }

    void onFaceScanUploadMessageOverride(const platform::AttributedText& message) override {
        const auto scan = waiting();
        if (scan && scan->scanner.show_message != nullptr) {
            scan->scanner.show_message(scan->scanner.user, scan.get(), textOf(message.text));
        }
    }

private:
    std::shared_ptr<kivo_scan> waiting() const {
        auto scan = scan_.lock();
        return scan && scan->verdict.get() == this && !isTold_ ? scan : nullptr;
    }

    bool proceed(const std::string& blob) {
        const auto scan = waiting();
        isTold_ = true;
        return scan && scan->scanner.proceed(scan->scanner.user, scan.get(), textOf(blob));
    }

    void cancel() {
        const auto scan = waiting();
        isTold_ = true;
        if (scan) {
            scan->scanner.cancel(scan->scanner.user, scan.get());
        }
    }

    void tellProgress(float fraction) const {
        const auto scan = waiting();
        if (scan && scan->scanner.progress != nullptr) {
            scan->scanner.progress(scan->scanner.user, scan.get(), fraction);
        }
    }

    std::weak_ptr<kivo_scan> scan_;
    bool isTold_ = false;
};

void process(platform::FaceTecFaceScanProcessorDelegate& delegate, std::shared_ptr<HostResult> result,
             std::shared_ptr<Verdict> verdict) {
    delegate.processSessionWhileFaceTecSDKWaits(std::move(result), std::move(verdict));
}

void process(platform::FaceTecIDScanProcessorDelegate& delegate, std::shared_ptr<HostResult> result,
             std::shared_ptr<Verdict> verdict) {
    delegate.processIDScanWhileFaceTecSDKWaits(std::move(result), std::move(verdict));
}

} // namespace

HostScanScreen::HostScanScreen(const kivo_face_scanner& scanner, ScanDelegate delegate, std::string sessionToken)
    : scanner_{scanner}
    , delegate_{std::move(delegate)}
    , sessionToken_{std::move(sessionToken)} {}

void HostScanScreen::viewDidAppear(bool /*animated*/) {
    if (std::exchange(hasBegun_, true)) {
        return;
    }
    const auto scan = std::make_shared<kivo_scan>(
        kivo_scan{.scanner = scanner_, .delegate = delegate_, .screen = weak_from_this(), .verdict = nullptr});
    scans().emplace(scan.get(), scan);
    scan_ = scan;
    const auto kind = delegate_.index() == 0 ? KIVO_SCAN_FACE : KIVO_SCAN_ID_CARD;
    scanner_.start(scanner_.user, kind, textOf(sessionToken_), scan.get());
}

void HostScanScreen::viewDidDisappear(bool /*animated*/) {
    const auto scan = scan_.lock();
    if (scan && !presentingViewController()) {
        scan->verdict = nullptr; // what the SDK still has to say comes too late
        scanner_.cancel(scanner_.user, scan.get());
    }
}

} // namespace kivo::c

using namespace kivo;

extern "C" {

kivo_status kivo_scan_submit(kivo_scan* scan, const kivo_scan_result* result) {
    return c::statusOf(__func__, [&] {
        const auto held = c::scanOf(scan);
        auto given = std::make_shared<c::HostResult>(c::structureOf(result, "result"));
        held->verdict = std::make_shared<c::Verdict>(held);
        std::visit([&](const auto& delegate) { c::process(*delegate, std::move(given), held->verdict); },
                   held->delegate);
    });
}

kivo_status kivo_scan_end(kivo_scan* scan) {
    return c::statusOf(__func__, [&] {
        const auto held = c::scanOf(scan);
        c::scans().erase(scan);
        const auto finish = [delegate = held->delegate] {
            std::visit([](const auto& each) { each->onFaceTecSDKCompletelyDone(); }, delegate);
        };
        const auto screen = held->screen.lock();
        if (const auto below = screen ? screen->presentingViewController() : nullptr) {
            below->dismiss(/*animated=*/true, finish);
        } else {
            platform::services().mainQueue->async(finish);
        }
    });
}
}
