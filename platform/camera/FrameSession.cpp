#include "platform/camera/FrameSession.hpp"

#include <kivo/platform/Services.hpp>

#include <utility>

namespace kivo::platform {

FrameSession::~FrameSession() {
    endScan();
}

bool FrameSession::canAddInput(const CaptureInput& input) const {
    return !input_ && dynamic_cast<const FrameInput*>(&input) != nullptr;
}

void FrameSession::addInput(std::shared_ptr<CaptureInput> input) {
    input_ = std::dynamic_pointer_cast<FrameInput>(std::move(input));
}

bool FrameSession::canAddOutput(const CaptureMetadataOutput& output) const {
    return !output_ && dynamic_cast<const MetadataOutput*>(&output) != nullptr;
}

void FrameSession::addOutput(std::shared_ptr<CaptureMetadataOutput> output) {
    output_ = std::dynamic_pointer_cast<MetadataOutput>(std::move(output));
}

bool FrameSession::isRunning() const {
    return isRunning_ && !(scan_ && scan_->hasEnded());
}

void FrameSession::startRunning() {
    if (isRunning()) {
        return;
    }
    endScan();
    isRunning_ = true;
    if (!input_ || !output_) {
        return;
    }
    const auto scan = std::make_shared<CodeScan>(makeReader_(), output_, preview());
    if (const auto error = scan->start()) {
        services().diagnostics->report("camera", "pictures cannot be read: " + error.message());
        isRunning_ = false;
        return;
    }
    {
        const std::scoped_lock lock{mutex_};
        scan_ = scan;
    }
    input_->feed->start(scan);
}

void FrameSession::stopRunning() {
    isRunning_ = false;
    endScan();
}

void FrameSession::endScan() {
    if (scan_) {
        scan_->stop();
        input_->feed->stop(scan_);
    }
}

PreviewFrame FrameSession::preview() const {
    const std::scoped_lock lock{mutex_};
    return scan_ ? scan_->preview() : PreviewFrame{};
}

} // namespace kivo::platform
