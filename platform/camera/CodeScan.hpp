#pragma once

#include "platform/camera/CodeReader.hpp"
#include "platform/camera/MetadataOutput.hpp"
#include "platform/posix/ExitGuard.hpp"

#include <kivo/platform/FrameSource.hpp>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

namespace kivo::platform {

/// One run of a session: takes pictures, reads the newest one on a thread of its own, and hands over what it says.
///
/// While a picture is read, or what it said waits to be taken, one newer picture waits and replaces the one before.
class CodeScan final : public FrameSink, public Stoppable, public std::enable_shared_from_this<CodeScan> {
public:
    /// `before` is the preview so far, which the run goes on with.
    CodeScan(std::shared_ptr<CodeReader> reader, std::shared_ptr<MetadataOutput> output, PreviewFrame before);

    /// Starts the thread; an error when there can be none.
    std::error_code start();

    /// Ends the run. From now on nothing is taken any more; nothing is handed over either, when this is called on the
    /// output's queue.
    void stop() override;

    /// Whether the pictures have ended by themselves.
    bool hasEnded() const;

    PreviewFrame preview() const;

    void take(std::shared_ptr<const VideoFrame> frame) override;
    void end(std::string reason) override;

private:
    void work();
    void readPictures();
    std::shared_ptr<const VideoFrame> nextPicture();
    void handOver(std::vector<MetadataObject> objects, const MetadataOutput::Wishes& wishes);
    bool isStopped() const;
    /// Lets the thread read again.
    void goOn();

    const std::shared_ptr<CodeReader> reader_;
    const std::shared_ptr<MetadataOutput> output_;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    PreviewFrame preview_;
    std::shared_ptr<const VideoFrame> waiting_;
    bool isHandingOver_ = false;
    bool isStopped_ = false;
    bool hasEnded_ = false;
};

} // namespace kivo::platform
