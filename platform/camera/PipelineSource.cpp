#include "platform/camera/Modules.hpp"
#include "platform/camera/VideoDevices.hpp"

#include <kivo/platform/FrameCamera.hpp>

#include <utility>

namespace kivo::platform {
namespace {

/// Leaves the work to the module with GStreamer, which is loaded when it is needed.
class PipelineSource final : public FrameSource {
public:
    explicit PipelineSource(std::string pipeline)
        : pipeline_{std::move(pipeline)} {}

    bool isThere() override { return !pipeline_.empty() || firstVideoDevice(); }

    std::expected<void, std::string> open() override {
        auto made = make();
        if (!made) {
            return std::unexpected{made.error()};
        }
        auto opened = (*made)->open();
        source_ = opened ? *made : nullptr;
        return opened;
    }

    void start(std::shared_ptr<FrameSink> sink) override {
        // After a stop the camera may be another one, or gone.
        const auto ready = source_ ? std::expected<void, std::string>{} : open();
        if (ready) {
            source_->start(std::move(sink));
        } else {
            sink->end(ready.error());
        }
    }

    void stop() override {
        if (const auto source = std::exchange(source_, nullptr)) {
            source->stop();
        }
    }

private:
    std::expected<std::shared_ptr<FrameSource>, std::string> make() const {
        auto pipeline = pipeline_;
        if (pipeline.empty()) {
            const auto device = firstVideoDevice();
            if (!device) {
                return std::unexpected{std::string{"the camera is gone; connect it again"}};
            }
            pipeline = cameraPipeline(*device);
        }
        const auto module = cameraModule();
        if (!module) {
            return std::unexpected{module.error()};
        }
        return (*module)->makePipeline(pipeline);
    }

    const std::string pipeline_;
    std::shared_ptr<FrameSource> source_;
};

} // namespace

std::shared_ptr<FrameSource> makePipelineSource(std::string pipeline) {
    return std::make_shared<PipelineSource>(std::move(pipeline));
}

} // namespace kivo::platform
