#include "platform/camera/CodeScan.hpp"

#include "platform/posix/BackgroundThread.hpp"

#include <kivo/platform/Services.hpp>

#include <string>
#include <tuple>
#include <utility>

namespace kivo::platform {

CodeScan::CodeScan(std::shared_ptr<CodeReader> reader, std::shared_ptr<MetadataOutput> output, PreviewFrame before)
    : reader_{std::move(reader)}
    , output_{std::move(output)}
    , preview_{std::move(before)}
    , numberBefore_{preview_.number} {}

std::error_code CodeScan::start() {
    // The exit handlers of the reader's library destroy its tables.
    static const bool isAhead = (ExitGuard::shared().runAheadOfHandlersSoFar(), true);
    std::ignore = isAhead;
    if (!ExitGuard::shared().add(shared_from_this())) {
        return std::make_error_code(std::errc::operation_canceled);
    }
    const auto error = startBackgroundThread("kivo-codes", [self = shared_from_this()] { self->work(); });
    if (error) {
        ExitGuard::shared().remove(this);
    }
    return error;
}

void CodeScan::stop() {
    const std::scoped_lock lock{mutex_};
    isStopped_ = true;
    waiting_ = nullptr;
    changed_.notify_all();
}

bool CodeScan::hasEnded() const {
    const std::scoped_lock lock{mutex_};
    return hasEnded_;
}

PreviewFrame CodeScan::preview() const {
    const std::scoped_lock lock{mutex_};
    return preview_;
}

void CodeScan::take(std::shared_ptr<const VideoFrame> frame) {
    if (!frame) {
        return;
    }
    if (!frame->isWhole()) {
        leaveOut(*frame);
        return;
    }
    // Declared before the lock: pictures are large, and are to be destroyed outside the lock.
    std::shared_ptr<const VideoFrame> shown = frame;
    const std::scoped_lock lock{mutex_};
    if (isStopped_ || isEnding_) {
        return;
    }
    std::swap(preview_.picture, shown);
    ++preview_.number;
    std::swap(waiting_, frame);
    changed_.notify_all();
}

void CodeScan::leaveOut(const VideoFrame& frame) {
    {
        const std::scoped_lock lock{mutex_};
        if (isStopped_ || isEnding_ || std::exchange(hasLeftOut_, true)) {
            return;
        }
    }
    const auto side = std::to_string(VideoFrame::largestSide);
    services().diagnostics->report(
        "camera", "a picture of " + std::to_string(frame.width) + " x " + std::to_string(frame.height) + " pixels in " +
                      std::to_string(frame.bytes.size()) +
                      " bytes is left out, like each that follows; pictures have exactly the bytes of their format, "
                      "and at most " +
                      side + " x " + side + " pixels");
}

void CodeScan::reportSilence(std::chrono::seconds since) const {
    {
        const std::scoped_lock lock{mutex_};
        if (isStopped_ || isEnding_ || hasLeftOut_ || preview_.number != numberBefore_) {
            return;
        }
    }
    services().diagnostics->report("camera", "no picture has come in " + std::to_string(since.count()) +
                                                 " seconds; check that the camera works, that no other program uses "
                                                 "it, and that the file or server of its pipeline answers");
}

void CodeScan::end(std::string reason) {
    {
        const std::scoped_lock lock{mutex_};
        if (isStopped_ || std::exchange(isEnding_, true)) {
            return;
        }
    }
    services().diagnostics->report("camera", reason);
    // Last, so that a host that sees the end has been told the reason.
    const std::scoped_lock lock{mutex_};
    hasEnded_ = true;
}

void CodeScan::work() {
    ExitGuard::markMemberThread();
    readPictures();
    ExitGuard::shared().remove(this);
}

void CodeScan::readPictures() {
    while (const auto picture = nextPicture()) {
        const auto subscription = output_->subscription();
        if (subscription.types.empty() || !subscription.queue) {
            continue;
        }
        auto objects = reader_->read(*picture, subscription.types);
        if (!objects.empty()) {
            handOver(std::move(objects), subscription);
        }
    }
}

/// Waits for a picture; null when the run is over.
std::shared_ptr<const VideoFrame> CodeScan::nextPicture() {
    std::unique_lock lock{mutex_};
    changed_.wait(lock, [this] { return isStopped_ || (waiting_ && !isHandingOver_); });
    return isStopped_ ? nullptr : std::exchange(waiting_, nullptr);
}

void CodeScan::handOver(std::vector<MetadataObject> objects, const MetadataOutput::Subscription& subscription) {
    {
        const std::scoped_lock lock{mutex_};
        if (isStopped_) {
            return;
        }
        isHandingOver_ = true;
    }
    subscription.queue->async([self = shared_from_this(), objects = std::move(objects), weak = subscription.delegate] {
        const auto delegate = weak.lock();
        if (delegate && !self->isStopped()) {
            delegate->didOutput(objects);
        }
        self->resume();
    });
}

bool CodeScan::isStopped() const {
    const std::scoped_lock lock{mutex_};
    return isStopped_;
}

void CodeScan::resume() {
    const std::scoped_lock lock{mutex_};
    isHandingOver_ = false;
    changed_.notify_all();
}

} // namespace kivo::platform
