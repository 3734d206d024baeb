#pragma once

#include "platform/camera/CodeScan.hpp"
#include "platform/camera/Feed.hpp"

#include <kivo/platform/CaptureSession.hpp>

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace kivo::platform {

/// Reads codes in the pictures of a source.
class FrameSession final : public CaptureSession {
public:
    using MakeReader = std::function<std::shared_ptr<CodeReader>()>;

    /// `makeReader` is called for each run, on the thread that starts it: an exit in the middle of what the reader's
    /// library makes at first would tear it down under another thread.
    explicit FrameSession(MakeReader makeReader)
        : makeReader_{std::move(makeReader)} {}

    FrameSession(const FrameSession&) = delete;
    FrameSession& operator=(const FrameSession&) = delete;
    ~FrameSession() override;

    bool canAddInput(const CaptureInput& input) const override;
    void addInput(std::shared_ptr<CaptureInput> input) override;
    bool canAddOutput(const CaptureMetadataOutput& output) const override;
    void addOutput(std::shared_ptr<CaptureMetadataOutput> output) override;

    bool isRunning() const override;
    void startRunning() override;
    void stopRunning() override;

    PreviewFrame preview() const override;

private:
    void endScan();

    const MakeReader makeReader_;
    std::shared_ptr<FrameInput> input_;
    std::shared_ptr<MetadataOutput> output_;
    bool isRunning_ = false;
    mutable std::mutex mutex_;
    /// The run under way, or the last one. Written on the main thread, under the lock.
    std::shared_ptr<CodeScan> scan_;
};

} // namespace kivo::platform
