#pragma once

#include "platform/camera/Modules.hpp"
#include "platform/posix/ExitGuard.hpp"

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/FrameSource.hpp>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace kivo::platform {

/// Keeps the delegate, its queue and the types of code that the delegate wants. The session's thread reads them.
class MetadataOutput final : public CaptureMetadataOutput {
public:
    struct Subscription {
        std::vector<MetadataObjectType> types;
        std::weak_ptr<CaptureMetadataOutputDelegate> delegate;
        std::shared_ptr<DispatchQueue> queue;
    };

    void setDelegate(std::weak_ptr<CaptureMetadataOutputDelegate> delegate,
                     std::shared_ptr<DispatchQueue> queue) override {
        const std::scoped_lock lock{mutex_};
        subscription_.delegate = std::move(delegate);
        subscription_.queue = std::move(queue);
    }

    void setObjectTypes(std::vector<MetadataObjectType> types) override {
        const std::scoped_lock lock{mutex_};
        subscription_.types = std::move(types);
    }

    Subscription subscription() const {
        const std::scoped_lock lock{mutex_};
        return subscription_;
    }

private:
    mutable std::mutex mutex_;
    Subscription subscription_;
};

/// One run of a session: takes pictures, reads the newest picture on a thread of its own, and hands the codes over.
///
/// While a picture is read, and while its codes wait for the delegate, only the newest of the further pictures is kept.
class CodeScan final : public FrameSink, public Stoppable, public std::enable_shared_from_this<CodeScan> {
public:
    /// `before` is the preview of the former run, which stays until the first picture.
    CodeScan(std::shared_ptr<CodeReader> reader, std::shared_ptr<MetadataOutput> output, PreviewFrame before);

    /// Starts the thread; the error when the system has no more threads or the process is exiting.
    std::error_code start();

    /// Ends the run: no further picture is taken. When the call comes on the output's queue, no further code is handed
    /// over either.
    void stop() override;

    /// Whether the pictures have ended by themselves, and the diagnostics have the reason.
    bool hasEnded() const;

    PreviewFrame preview() const;

    /// Reports that no picture has come so far, if the run goes on and none has.
    void reportSilence(std::chrono::seconds since) const;

    void take(std::shared_ptr<const VideoFrame> frame) override;
    void end(std::string reason) override;

private:
    void work();
    void readPictures();
    std::shared_ptr<const VideoFrame> nextPicture();
    void handOver(std::vector<MetadataObject> objects, const MetadataOutput::Subscription& subscription);
    bool isStopped() const;
    void leaveOut(const VideoFrame& frame);
    /// Tells the thread that the delegate has taken the codes.
    void resume();

    const std::shared_ptr<CodeReader> reader_;
    const std::shared_ptr<MetadataOutput> output_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    PreviewFrame preview_;
    const std::uint64_t numberBefore_;
    std::shared_ptr<const VideoFrame> waiting_;
    bool isHandingOver_ = false;
    bool isStopped_ = false;
    bool isEnding_ = false;
    bool hasEnded_ = false;
    bool hasLeftOut_ = false;
};

} // namespace kivo::platform
