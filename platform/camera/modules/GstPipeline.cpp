#include "GstPipeline.hpp"

#include "GstFrame.hpp"
#include "GstProblem.hpp"
#include "platform/camera/Modules.hpp"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <mutex>
#include <optional>
#include <utility>

namespace kivo::platform {
namespace {

struct Unref {
    void operator()(void* object) const { gst_object_unref(object); }

    void operator()(GError* error) const { g_error_free(error); }

    void operator()(gchar* text) const { g_free(text); }

    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
};

template <class Object>
using Owned = std::unique_ptr<Object, Unref>;

/// Where the pipeline's threads bring pictures and problems.
class Outlet {
public:
    /// From now on everything goes to `sink`. What went wrong before is told at once.
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

    void take(std::shared_ptr<const VideoFrame> frame) const {
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

    std::optional<std::string> problem() const {
        const std::scoped_lock lock{mutex_};
        return problem_;
    }

private:
    std::shared_ptr<FrameSink> sink() const {
        const std::scoped_lock lock{mutex_};
        return sink_;
    }

    mutable std::mutex mutex_;
    std::shared_ptr<FrameSink> sink_;
    /// The first one while there is nobody to tell.
    std::optional<std::string> problem_;
};

// What GStreamer calls holds its own reference to the outlet, which it gives back when it calls no more.

using SharedOutlet = std::shared_ptr<Outlet>;

void letGo(gpointer outlet) {
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
    (*static_cast<SharedOutlet*>(outlet))
        ->end("the camera's pictures have ended; start the session anew to see them again");
}

GstBusSyncReply onMessage(GstBus* /*bus*/, GstMessage* message, gpointer outlet) {
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gchar* debug = nullptr;
        gst_message_parse_error(message, &error, &debug);
        const Owned<GError> owned{error};
        const Owned<gchar> ownedDebug{debug};
        (*static_cast<SharedOutlet*>(outlet))->end(describe(*error, debug != nullptr ? debug : ""));
    }
    // Nobody reads the bus; who drops a message lets go of it.
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
        // Opens devices and files, and needs no thread of the pipeline.
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
        // The newest picture only, at the pace at which the pictures were taken.
        const auto whole =
            description_ + " ! videoconvert ! appsink name=kivo max-buffers=1 drop=true caps=\"" + frameCaps + '"';
        Owned<GstElement> pipeline{gst_parse_launch_full(whole.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error)};
        if (error != nullptr) {
            const Owned<GError> owned{error};
            return std::unexpected{describe(*error)};
        }
        pipeline_ = std::move(pipeline);
        outlet_ = std::make_shared<Outlet>();
        connectOutlet();
        return {};
    }

    void connectOutlet() {
        const Owned<GstElement> sink{gst_bin_get_by_name(GST_BIN(pipeline_.get()), "kivo")};
        GstAppSinkCallbacks callbacks{};
        callbacks.eos = onEnd;
        callbacks.new_sample = onSample;
        gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, new SharedOutlet{outlet_}, letGo);
        const Owned<GstBus> bus{gst_element_get_bus(pipeline_.get())};
        gst_bus_set_sync_handler(bus.get(), onMessage, new SharedOutlet{outlet_}, letGo);
    }

    void close() {
        if (pipeline_) {
            gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
            pipeline_ = nullptr;
        }
    }

    const std::string description_;
    Owned<GstElement> pipeline_;
    std::shared_ptr<Outlet> outlet_;
};

} // namespace

std::shared_ptr<FrameSource> makeGstPipeline(const std::string& description) {
    return std::make_shared<GstPipelineSource>(description);
}

} // namespace kivo::platform

extern "C" KIVO_EXPORT const kivo::platform::CameraModule kivoModule;
const kivo::platform::CameraModule kivoModule{.version = KIVO_SDK_VERSION,
                                              .makePipeline = kivo::platform::makeGstPipeline};
