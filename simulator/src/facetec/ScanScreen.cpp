#include "ScanScreen.hpp"

#include "VendorEndpoints.hpp"

#include <kivo/platform/Services.hpp>

#include <cmath>
#include <utility>

namespace kivo::simulator {

using namespace std::chrono_literals;

/// Takes one answer. The session ignores an answer that comes after the session has moved on.
class ScanScreen::Verdict final : public ScanVerdict {
public:
    explicit Verdict(const std::shared_ptr<ScanScreen>& screen)
        : screen_{screen}
        , record_{screen->record_}
        , memory_{screen->memory_} {}

    bool proceed(const std::string& blob) override {
        const auto screen = takeAnswer("handed over a result blob");
        return screen && screen->proceed(blob);
    }

    void cancel() override {
        if (const auto screen = takeAnswer("cancelled")) {
            ++record_->cancels;
            screen->close();
        }
    }

    void setProgress(float progress) override {
        const bool isFraction = progress >= 0 && progress <= 1;
        if (!isFraction) {
            memory_->violations.push_back("The upload progress was " + std::to_string(progress) +
                                          ", which is not from 0 to 1");
            return;
        }
        if (const auto screen = waitingScreen("told the upload progress")) {
            record_->uploadProgress.push_back(progress);
            screen->page_->setMessage({.text = VendorText{"{} % sent"}.shown(std::lround(progress * 100))});
            screen->page_->setProgress(progress);
        }
    }

    void setMessage(const platform::AttributedText& message) override {
        if (const auto screen = waitingScreen("replaced the upload message")) {
            record_->uploadMessages.push_back(message);
            screen->page_->setMessage(message);
        }
    }

private:
    std::shared_ptr<ScanScreen> waitingScreen(const char* doing) {
        if (isAnswered_) {
            memory_->violations.push_back(std::string{"The processor "} + doing + " after its answer");
            return nullptr;
        }
        const auto screen = screen_.lock();
        return screen && screen->verdict_.get() == this ? screen : nullptr;
    }

    std::shared_ptr<ScanScreen> takeAnswer(const char* doing) {
        const auto screen = waitingScreen(doing);
        isAnswered_ = isAnswered_ || screen;
        return screen;
    }

    const std::weak_ptr<ScanScreen> screen_;
    const std::shared_ptr<ScanRecord> record_;
    const std::shared_ptr<FaceTecMemory> memory_;
    bool isAnswered_ = false;
};

ScanScreen::ScanScreen(std::unique_ptr<ScanProcessor> processor, ScanScript script, bool waitsForPerson,
                       std::shared_ptr<platform::FaceTecCustomization> look, std::shared_ptr<ScanRecord> record,
                       std::shared_ptr<FaceTecMemory> memory)
    : processor_{std::move(processor)}
    , script_{std::move(script)}
    , waitsForPerson_{waitsForPerson}
    , look_{std::move(look)}
    , record_{std::move(record)}
    , memory_{std::move(memory)}
    , retriesLeft_{script_.retries} {}

ScanScreen::~ScanScreen() = default;

void ScanScreen::viewDidAppear(bool /*animated*/) {
    if (stage_ != Stage::made) {
        return;
    }
    record_->isShown = true;
    // 1 stands for "unsuccessful" in both of the vendor's tables.
    if (const int status = memory_->initializationStatus.value_or(1); status != 0) {
        handOver(status);
        return;
    }
    scan();
}

void ScanScreen::viewDidDisappear(bool /*animated*/) {
    if (presentingViewController()) {
        return;
    }
    if (stage_ == Stage::made || stage_ == Stage::scanning || stage_ == Stage::waiting) {
        handOver(processor_->numbers.contextSwitch);
    } else if (stage_ == Stage::judged) {
        close();
    }
}

void ScanScreen::scan() {
    enter(Stage::scanning);
    const auto numbers = processor_->numbers;
    show(page(waitsForPerson_ ? VendorText{"There is no camera here: choose how the scan goes."}.shown()
                              : VendorText{"There is no camera here: the scan goes as it was planned."}.shown()),
         {ending("finishScanButton", "Finish the scan", 0), ending("cancelScanButton", "Cancel", numbers.cancelled),
          ending("timeOutButton", "Let it time out", numbers.timeout),
          ending("refuseCameraButton", "Refuse the camera", numbers.cameraRefused),
          ending("switchAppButton", "Switch to another app", numbers.contextSwitch)});
    if (!waitsForPerson_) {
        later(script_.scanTime, [this] { endScan(retriesLeft_ > 0 ? 0 : script_.status); });
    }
}

void ScanScreen::endScan(int status) {
    if (script_.givesResult) {
        handOver(status);
    } else {
        close();
    }
}

void ScanScreen::handOver(int status) {
    enter(Stage::waiting);
    show(page(status == 0 ? VendorText{"Sending the scan"}.shown() : VendorText{"Stopping"}.shown()),
         {ending("switchAppButton", "Switch to another app", processor_->numbers.contextSwitch)});
    verdict_ = std::make_shared<Verdict>(std::static_pointer_cast<ScanScreen>(shared_from_this()));
    record_->results.push_back(status);
    if (status == 0 && script_.statusWhileWaiting) {
        later(0s, [this] { handOver(*script_.statusWhileWaiting); });
    }
    const bool isApart = script_.sides == ScanScript::Sides::frontThenBack;
    processor_->process({.status = status,
                         .hasFront = !isApart || !isOnBackSide_,
                         .hasBack = isApart ? isOnBackSide_ : script_.sides == ScanScript::Sides::frontAndBack},
                        script_, verdict_);
}

bool ScanScreen::proceed(const std::string& blob) {
    enter(Stage::judged);
    record_->resultBlobs.push_back(blob);
    const bool isCompleted = record_->results.back() == 0;
    if (!isCompleted) {
        memory_->violations.emplace_back("The processor handed over a result blob for a scan that was not completed");
    }
    const bool serverWantsAnother = blob == scanAgainBlob;
    bool isTaken = false;
    if (!isCompleted || !script_.takesResultBlob) {
        later(0s, [this] { close(); });
    } else if (serverWantsAnother || retriesLeft_ > 0) {
        retriesLeft_ -= serverWantsAnother ? 0 : 1;
        later(0s, [this] { askAgain(); });
    } else if (record_->kind == ScanRecord::Kind::idDocument && script_.sides == ScanScript::Sides::frontThenBack &&
               !isOnBackSide_) {
        isOnBackSide_ = true;
        later(0s, [this] { scan(); });
    } else {
        isTaken = true;
        // The SDK may set the success message right after this call.
        later(0s, [this] { showSuccess(); });
    }
    record_->blobsTaken.push_back(isTaken);
    return isTaken;
}

void ScanScreen::askAgain() {
    enter(Stage::scanning);
    const bool hasPicture = look_ && !look_->guidanceCustomization.retryScreenSlideshowImages.empty();
    show(page(VendorText{"Please scan once more"}.shown(),
              hasPicture ? look_->guidanceCustomization.retryScreenSlideshowImages.front() : nullptr),
         {{"scanAgainButton", VendorText{"Scan again"}.shown(), ifStillHere([this] { scan(); })},
          ending("cancelScanButton", "Cancel", processor_->numbers.cancelled)});
    if (!waitsForPerson_) {
        later(0s, [this] { scan(); });
    }
}

void ScanScreen::showSuccess() {
    enter(Stage::judged);
    const auto& own = memory_->successMessage;
    show(page(own.empty() ? VendorText{"The scan is done"}.shown() : own),
         {{"continueButton", VendorText{"Continue"}.shown(), ifStillHere([this] { close(); })}});
    if (!waitsForPerson_) {
        later(0s, [this] { close(); });
    }
}

void ScanScreen::close() {
    enter(Stage::over);
    const auto finish = [processor = std::move(processor_), record = record_] {
        record->isDone = true;
        processor->done();
    };
    if (const auto presenter = presentingViewController()) {
        presenter->dismiss(true, finish);
    } else {
        platform::services().mainQueue->async(finish);
    }
}

void ScanScreen::enter(Stage stage) {
    stage_ = stage;
    ++turn_;
    verdict_ = nullptr;
}

void ScanScreen::show(VendorPage page, std::vector<Choice> choices) {
    if (waitsForPerson_) {
        page.offer(std::move(choices));
    } else if (stage_ != Stage::judged) {
        page.showWork();
    }
    page_ = std::move(page);
    page_->showIn(*view());
}

Choice ScanScreen::ending(const char* name, VendorText title, int status) {
    return {.name = name, .title = title.shown(), .action = ifStillHere([this, status] { endScan(status); })};
}

void ScanScreen::later(std::chrono::nanoseconds delay, std::function<void()> step) {
    platform::services().mainQueue->asyncAfter(delay, ifStillHere(std::move(step)));
}

std::function<void()> ScanScreen::ifStillHere(std::function<void()> step) {
    return [weak = weak_from_this(), turn = turn_, step = std::move(step), this] {
        if (const auto self = weak.lock(); self && turn_ == turn) {
            step();
        }
    };
}

VendorPage ScanScreen::page(const std::string& message, std::shared_ptr<const platform::Image> picture) const {
    const auto title = record_->kind == ScanRecord::Kind::face ? VendorText{"Simulated face scan"}
                       : isOnBackSide_                         ? VendorText{"Simulated ID scan: the back side"}
                                                               : VendorText{"Simulated ID scan"};
    const auto frame = record_->kind == ScanRecord::Kind::face ? VendorPage::Frame::face : VendorPage::Frame::card;
    return {"scan", {}, title.shown(), message, frame, std::move(picture)};
}

} // namespace kivo::simulator
