#pragma once

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/FrameSource.hpp>

#include <expected>
#include <memory>
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

} // namespace kivo::platform
