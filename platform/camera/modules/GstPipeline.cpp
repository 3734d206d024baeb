#include "GstAdvice.hpp"
#include "GstOwned.hpp"
#include "GstPictureGuard.hpp"
#include "platform/camera/Modules.hpp"

#include <kivo/platform/FrameSource.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

/// The form in which pictures are asked for: brightness apart from colour, so that the code reader needs no conversion.
constexpr auto frameCaps = "video/x-raw,format=I420,colorimetry=(string)1:4:0:0";

void appendPlane(std::vector<std::uint8_t>& bytes, const GstVideoFrame& frame, guint plane) {
    const auto* row = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
    const auto width = GST_VIDEO_FRAME_COMP_WIDTH(&frame, plane);
    const auto height = GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane);
    for (int y = 0; y < height; ++y, row += GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane)) {
        bytes.insert(bytes.end(), row, row + width);
    }
}

/// Copies a picture in the form `frameCaps`; null for a picture in any other form.
std::shared_ptr<const VideoFrame> copyFrame(GstSample* sample) {
    GstVideoInfo info;
    GstVideoFrame mapped;
    auto* const caps = gst_sample_get_caps(sample);
    auto* const buffer = gst_sample_get_buffer(sample);
    if (caps == nullptr || buffer == nullptr || !gst_video_info_from_caps(&info, caps) ||
        GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420 ||
        !gst_video_frame_map(&mapped, &info, buffer, GST_MAP_READ)) {
        return nullptr;
    }
    auto frame = std::make_shared<VideoFrame>();
    frame->width = GST_VIDEO_FRAME_WIDTH(&mapped);
    frame->height = GST_VIDEO_FRAME_HEIGHT(&mapped);
    frame->format = VideoFrame::Format::i420;
    frame->bytes.reserve(GST_VIDEO_INFO_SIZE(&info));
    for (guint plane = 0; plane < 3; ++plane) {
        appendPlane(frame->bytes, mapped, plane);
    }
    gst_video_frame_unmap(&mapped);
    return frame;
}

/// Takes the pictures and problems of the pipeline's threads to the sink.
class Outlet {
public:
    /// Sends everything to `sink` from now on. A problem that came before is sent at once.
    void connect(std::shared_ptr<FrameSink> sink) {
        std::optional<std::string> problem;
        {
            const std::scoped_lock lock{mutex_};
            sink_ = std::move(sink);
            problem = std::exchange(problem_, std::nullopt);
        }
        if (problem) {
            end(*std::move(problem));
        }
    }

    void take(std::shared_ptr<const VideoFrame> frame) {
        hasPictures_ = true;
        if (const auto to = sink()) {
            to->take(std::move(frame));
        }
    }

    void end(std::string problem) {
        if (const auto to = sink()) {
            to->end(std::move(problem));
            return;
        }
        const std::scoped_lock lock{mutex_};
        problem_ = problem_.value_or(std::move(problem));
    }

    /// The pipeline has nothing more to give.
    void endWell() {
        end(hasPictures_ ? "the camera's pictures have ended; start the session anew to see them again"
                         : noPictures("the file ends before its first picture is whole.",
                                      "name a file that is neither damaged nor cut off"));
    }

    std::optional<std::string> problem() const {
        const std::scoped_lock lock{mutex_};
        return problem_;
    }

private:
    std::shared_ptr<FrameSink> sink() const {
        const std::scoped_lock lock{mutex_};
        return sink_;
    }

    std::atomic<bool> hasPictures_ = false;
    mutable std::mutex mutex_;
    std::shared_ptr<FrameSink> sink_;
    /// The first problem that came before there was a sink.
    std::optional<std::string> problem_;
};

/// Every callback registered with GStreamer holds a reference of its own, which GStreamer releases with the callback.
using SharedOutlet = std::shared_ptr<Outlet>;

void releaseOutlet(gpointer outlet) {
    delete static_cast<SharedOutlet*>(outlet);
}

GstFlowReturn onSample(GstAppSink* sink, gpointer outlet) {
    if (const Owned<GstSample> sample{gst_app_sink_pull_sample(sink)}) {
        if (auto frame = copyFrame(sample.get())) {
            (*static_cast<SharedOutlet*>(outlet))->take(std::move(frame));
        }
    }
    return GST_FLOW_OK;
}

void onEnd(GstAppSink* /*sink*/, gpointer outlet) {
    (*static_cast<SharedOutlet*>(outlet))->endWell();
}

GstBusSyncReply onMessage(GstBus* /*bus*/, GstMessage* message, gpointer outlet) {
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        (*static_cast<SharedOutlet*>(outlet))->end(describe(*message));
    }
    // The bus has no reader: the message is dropped here, and dropping includes the release.
    gst_message_unref(message);
    return GST_BUS_DROP;
}

class GstPipelineSource final : public FrameSource {
public:
    explicit GstPipelineSource(std::string description)
        : description_{std::move(description)} {}

    GstPipelineSource(const GstPipelineSource&) = delete;
    GstPipelineSource& operator=(const GstPipelineSource&) = delete;

    ~GstPipelineSource() override { close(); }

    std::expected<void, std::string> open() override {
        close();
        if (auto made = make(); !made) {
            return made;
        }
        // READY opens devices and files, and starts no thread of the pipeline.
        if (gst_element_set_state(pipeline_.get(), GST_STATE_READY) == GST_STATE_CHANGE_FAILURE) {
            auto problem = outlet_->problem().value_or("the camera cannot be opened");
            close();
            return std::unexpected{std::move(problem)};
        }
        return {};
    }

    void start(std::shared_ptr<FrameSink> sink) override {
        if (!pipeline_) {
            if (const auto opened = open(); !opened) {
                sink->end(opened.error());
                return;
            }
        }
        outlet_->connect(sink);
        if (gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
            sink->end("the camera cannot be started");
        }
    }

    void stop() override { close(); }

private:
    std::expected<void, std::string> make() {
        GError* error = nullptr;
        if (!gst_init_check(nullptr, nullptr, &error)) {
            const Owned<GError> owned{error};
            return std::unexpected{describe(*error)};
        }
        // The sink keeps only the newest picture, and gives pictures at the pace at which they were taken.
        const auto whole =
            description_ + " ! videoconvert ! appsink name=kivo max-buffers=1 drop=true caps=\"" + frameCaps + '"';
        Owned<GstElement> pipeline{gst_parse_launch_full(whole.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error)};
        if (error != nullptr) {
            const Owned<GError> owned{error};
            return std::unexpected{describe(*error)};
        }
        pipeline_ = std::move(pipeline);
        outlet_ = std::make_shared<Outlet>();
        guardPictures(*GST_BIN(pipeline_.get()),
                      [outlet = outlet_](std::string problem) { outlet->end(std::move(problem)); });
        connectOutlet();
        return {};
    }

    void connectOutlet() {
        const Owned<GstElement> sink{gst_bin_get_by_name(GST_BIN(pipeline_.get()), "kivo")};
        GstAppSinkCallbacks callbacks{};
        callbacks.eos = onEnd;
        callbacks.new_sample = onSample;
        gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, new SharedOutlet{outlet_}, releaseOutlet);
        const Owned<GstBus> bus{gst_element_get_bus(pipeline_.get())};
        gst_bus_set_sync_handler(bus.get(), onMessage, new SharedOutlet{outlet_}, releaseOutlet);
    }

    void close() {
        if (pipeline_) {
            gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
            pipeline_ = nullptr;
            outlet_ = nullptr;
        }
    }

    const std::string description_;
    Owned<GstElement> pipeline_;
    std::shared_ptr<Outlet> outlet_;
};

/// The pictures of a GStreamer pipeline; `description` is the pipeline's text up to the element that gives pictures.
std::shared_ptr<FrameSource> makeGstPipeline(const std::string& description) {
    // The first initialisation may look through all plugins, which takes some seconds; a failure is told at the
    // opening.
    gst_init_check(nullptr, nullptr, nullptr);
    return std::make_shared<GstPipelineSource>(description);
}

} // namespace
} // namespace kivo::platform

extern "C" KIVO_EXPORT const kivo::platform::CameraModule kivoCamera;
const kivo::platform::CameraModule kivoCamera{.version = KIVO_SDK_VERSION,
                                              .makePipeline = kivo::platform::makeGstPipeline};
