#pragma once

#include "linux/camera/CodeScan.hpp"

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/FrameSource.hpp>

#include <expected>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace kivo::platform {

/// Lets several sessions have the pictures of one source, one at a time: whoever opened or started it last.
class Feed {
public:
    explicit Feed(std::shared_ptr<FrameSource> source)
        : source_{std::move(source)} {}

    bool isThere() { return source_->isThere(); }

    std::expected<void, std::string> open();
    void start(const std::shared_ptr<FrameSink>& sink);
    /// Stops the source unless another sink has taken it over.
    void stop(const std::shared_ptr<FrameSink>& sink);
    /// Closes the source unless it is in use.
    void close();

private:
    void takeOver();

    const std::shared_ptr<FrameSource> source_;
    std::shared_ptr<FrameSink> fed_;
};

class FrameInput final : public CaptureInput {
public:
    explicit FrameInput(std::shared_ptr<Feed> from)
        : feed{std::move(from)} {}

    FrameInput(const FrameInput&) = delete;
    FrameInput& operator=(const FrameInput&) = delete;

    ~FrameInput() override { feed->close(); }

    const std::shared_ptr<Feed> feed;
};

/// Reads codes in the pictures of a source.
class FrameSession final : public CaptureSession {
public:
    explicit FrameSession(CodeScan::MakeReader makeReader)
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

    const CodeScan::MakeReader makeReader_;
    std::shared_ptr<FrameInput> input_;
    std::shared_ptr<MetadataOutput> output_;
    bool isRunning_ = false;
    mutable std::mutex mutex_;
    /// The run under way, or the last one. Written on the main thread, under the lock.
    std::shared_ptr<CodeScan> scan_;
};

} // namespace kivo::platform
