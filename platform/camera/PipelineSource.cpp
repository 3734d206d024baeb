#include "platform/base/Process.hpp"
#include "platform/camera/Modules.hpp"
#include "platform/camera/VideoDevices.hpp"
#include "platform/posix/SerialQueue.hpp"

#include <kivo/platform/DispatchQueue.hpp>
#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/Services.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

/// Leaves the work to the module with GStreamer, which is loaded at first use.
///
/// A pipeline blocks at any step when its file or device does: a FIFO without a writer, a file system without its
/// server. The steps therefore run in order on a thread of the source, and the main thread waits for them only so long.
class PipelineSource final : public FrameSource {
public:
    explicit PipelineSource(std::string pipeline)
        : pipeline_{std::move(pipeline)} {}

    PipelineSource(const PipelineSource&) = delete;
    PipelineSource& operator=(const PipelineSource&) = delete;

    ~PipelineSource() override {
        PipelineSource::stop();
        if (isBlocked_) {
            auto& left = leftBehind();
            ++left;
            // Runs when the step that blocks has ended.
            thread_->async([&left] { --left; });
        }
    }

    bool isThere() override { return !pipeline_.empty() || firstVideoDevice(); }

    std::expected<void, std::string> open() override {
        stop();
        auto made = make();
        if (!made) {
            return std::unexpected{made.error()};
        }
        // The pipeline of an earlier run still blocks: another pipeline would only wait behind it.
        if (!isIdle()) {
            return std::unexpected{noAnswer};
        }
        if (leftBehind() >= mostLeftBehind) {
            return std::unexpected{std::string{"the cameras before this camera do not stop; check the files and the "
                                               "devices that their pipelines read"}};
        }
        const auto opened = std::make_shared<std::expected<void, std::string>>();
        try {
            run(*made, [opened](FrameSource& source) { *opened = source.open(); });
        } catch (const std::system_error& error) {
            return std::unexpected{std::string{"the camera cannot be opened: "} + error.what()};
        }
        if (!isIdle()) {
            run(*made, [](FrameSource& source) { source.stop(); });
            return std::unexpected{noAnswer};
        }
        source_ = *opened ? *made : nullptr;
        return *opened;
    }

    void start(std::shared_ptr<FrameSink> sink) override {
        // After a stop the first camera may be another device, or there may be none.
        const auto ready = source_ ? std::expected<void, std::string>{} : open();
        if (ready) {
            run(source_, [sink = std::move(sink)](FrameSource& source) { source.start(sink); });
        } else {
            sink->end(ready.error());
        }
    }

    void stop() override {
        const auto source = std::exchange(source_, nullptr);
        if (!source) {
            return;
        }
        run(source, [](FrameSource& each) { each.stop(); });
        if (!isIdle()) {
            services().diagnostics->report("camera", "the camera does not stop, and is left to stop by itself; check "
                                                     "the file or the device that its pipeline reads");
        }
    }

private:
    static constexpr std::chrono::seconds patience{2};
    static constexpr auto noAnswer =
        "the camera does not answer; check the file or the device that its pipeline reads, and open the camera again";

    /// How many sources are gone whose threads still block. Each keeps a thread, so their number has a bound.
    static std::atomic<int>& leftBehind() {
        return Process::current().part<std::atomic<int>>([] { return new std::atomic<int>{0}; });
    }

    static constexpr int mostLeftBehind = 4;

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

    /// Runs one step of a pipeline on the source's thread, after the steps before.
    void run(std::shared_ptr<FrameSource> source, std::function<void(FrameSource&)> step) {
        if (!thread_) {
            thread_ = makeCallbackQueue("kivo-camera");
        }
        const auto done = std::make_shared<std::promise<void>>();
        lastStep_ = done->get_future();
        thread_->async([source = std::move(source), step = std::move(step), done]() mutable {
            step(*source);
            // The main thread waits for the pipeline's end, too.
            step = nullptr;
            source = nullptr;
            done->set_value();
        });
    }

    /// Whether every step is done. Waits for the steps, but never twice for a step that blocks.
    bool isIdle() {
        const auto limit = isBlocked_ ? std::chrono::seconds{0} : patience;
        isBlocked_ = lastStep_.valid() && lastStep_.wait_for(limit) != std::future_status::ready;
        return !isBlocked_;
    }

    const std::string pipeline_;
    std::shared_ptr<FrameSource> source_;
    std::shared_ptr<DispatchQueue> thread_;
    std::future<void> lastStep_;
    bool isBlocked_ = false;
};

} // namespace

std::shared_ptr<FrameSource> makePipelineSource(std::string pipeline) {
    return std::make_shared<PipelineSource>(std::move(pipeline));
}

} // namespace kivo::platform
