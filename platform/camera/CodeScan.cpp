#include "platform/camera/CodeScan.hpp"

#include "platform/posix/BackgroundThread.hpp"

#include <kivo/platform/Services.hpp>

#include <tuple>
#include <utility>

namespace kivo::platform {

CodeScan::CodeScan(std::shared_ptr<CodeReader> reader, std::shared_ptr<MetadataOutput> output, PreviewFrame before)
    : reader_{std::move(reader)}
    , output_{std::move(output)}
    , preview_{std::move(before)} {}

std::error_code CodeScan::start() {
    // The reader's library has tables that are gone when its exit handlers have run.
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
    if (!frame || !frame->isWhole()) {
        return;
    }
    // Declared before the lock: pictures are large, and their last references go outside it.
    std::shared_ptr<const VideoFrame> shown = frame;
    const std::scoped_lock lock{mutex_};
    if (isStopped_ || hasEnded_) {
        return;
    }
    std::swap(preview_.picture, shown);
    ++preview_.number;
    std::swap(waiting_, frame);
    changed_.notify_all();
}

void CodeScan::end(std::string reason) {
    {
        const std::scoped_lock lock{mutex_};
        if (isStopped_ || std::exchange(hasEnded_, true)) {
            return;
        }
    }
    services().diagnostics->report("camera", reason);
}

void CodeScan::work() {
    ExitGuard::markMemberThread();
    readPictures();
    ExitGuard::shared().remove(this);
}

void CodeScan::readPictures() {
    while (const auto picture = nextPicture()) {
        const auto wishes = output_->wishes();
        if (wishes.types.empty() || !wishes.queue) {
            continue;
        }
        auto objects = reader_->read(*picture, wishes.types);
        if (!objects.empty()) {
            handOver(std::move(objects), wishes);
        }
    }
}

/// Waits for a picture; null when the run is over.
std::shared_ptr<const VideoFrame> CodeScan::nextPicture() {
    std::unique_lock lock{mutex_};
    changed_.wait(lock, [this] { return isStopped_ || (waiting_ && !isHandingOver_); });
    return isStopped_ ? nullptr : std::exchange(waiting_, nullptr);
}

void CodeScan::handOver(std::vector<MetadataObject> objects, const MetadataOutput::Wishes& wishes) {
    {
        const std::scoped_lock lock{mutex_};
        if (isStopped_) {
            return;
        }
        isHandingOver_ = true;
    }
    wishes.queue->async([self = shared_from_this(), objects = std::move(objects), weak = wishes.delegate] {
        const auto delegate = weak.lock();
        if (delegate && !self->isStopped()) {
            delegate->didOutput(objects);
        }
        self->goOn();
    });
}

bool CodeScan::isStopped() const {
    const std::scoped_lock lock{mutex_};
    return isStopped_;
}

void CodeScan::goOn() {
    const std::scoped_lock lock{mutex_};
    isHandingOver_ = false;
    changed_.notify_all();
}

} // namespace kivo::platform
