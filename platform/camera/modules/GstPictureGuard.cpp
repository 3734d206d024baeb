#include "GstPictureGuard.hpp"

#include "GstAdvice.hpp"
#include "GstOwned.hpp"
#include "PictureStream.hpp"

#include <kivo/platform/VideoFrame.hpp>

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::platform {
namespace {

/// The guard of one pipeline, shared by the callbacks of the pipeline's pads.
class Guard {
public:
    explicit Guard(std::function<void(std::string)> refused)
        : refused_{std::move(refused)} {}

    bool hasRefused() const { return hasRefused_; }

    void refuse(std::string_view problem, std::string_view remedy) {
        if (!hasRefused_.exchange(true)) {
            refused_(noPictures(problem, remedy));
        }
    }

    /// Whether a picture of these sides is refused.
    bool refusesSides(std::int64_t width, std::int64_t height) {
        if (width <= VideoFrame::largestSide && height <= VideoFrame::largestSide) {
            return false;
        }
        const auto side = std::to_string(VideoFrame::largestSide);
        refuse("a picture of " + std::to_string(width) + " x " + std::to_string(height) + " pixels is too large.",
               "make the picture smaller; " + side + " x " + side + " pixels are read at most");
        return true;
    }

private:
    const std::function<void(std::string)> refused_;
    std::atomic<bool> hasRefused_ = false;
};

using SharedGuard = std::shared_ptr<Guard>;

void releaseGuard(gpointer guard) {
    delete static_cast<SharedGuard*>(guard);
}

void releaseGuardOfSignal(gpointer guard, GClosure* /*closure*/) {
    releaseGuard(guard);
}

/// The compressed pictures that reach a decoder.
struct DecoderInput {
    SharedGuard guard;
    PictureStream pictures;
};

void releaseInput(gpointer input) {
    delete static_cast<DecoderInput*>(input);
}

/// Hands out no memory. An element that asks for memory before the refusal has ended the pipeline fails then.
GstAllocator* refusingAllocator() {
    static auto* const allocator = [] {
        GTypeInfo info{};
        GTypeQuery parent{};
        g_type_query(GST_TYPE_ALLOCATOR, &parent);
        info.class_size = static_cast<guint16>(parent.class_size);
        info.instance_size = static_cast<guint16>(parent.instance_size);
        info.class_init = [](gpointer type, gpointer /*data*/) {
            static_cast<GstAllocatorClass*>(type)->alloc = [](GstAllocator*, gsize, GstAllocationParams*) {
                return static_cast<GstMemory*>(nullptr);
            };
            static_cast<GstAllocatorClass*>(type)->free = [](GstAllocator*, GstMemory*) {};
        };
        const auto type = g_type_register_static(GST_TYPE_ALLOCATOR, "KivoRefusingAllocator", &info, GTypeFlags{});
        return GST_ALLOCATOR(gst_object_ref_sink(g_object_new(type, nullptr)));
    }();
    return allocator;
}

/// Whether the form of data has a picture size beyond the limit. Files and compressed video mostly tell their size,
/// too.
bool isTooLarge(const GstCaps* caps, Guard& guard) {
    if (caps == nullptr || gst_caps_get_size(caps) == 0) {
        return false;
    }
    const auto* const form = gst_caps_get_structure(caps, 0);
    int width = 0;
    int height = 0;
    return gst_structure_get_int(form, "width", &width) && gst_structure_get_int(form, "height", &height) &&
           guard.refusesSides(width, height);
}

GstPadProbeReturn onTraffic(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer data) {
    auto& guard = **static_cast<SharedGuard*>(data);
    if ((info->type & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) != 0) {
        auto* const event = gst_pad_probe_info_get_event(info);
        GstCaps* caps = nullptr;
        if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
            gst_event_parse_caps(event, &caps);
            isTooLarge(caps, guard);
        }
        return GST_PAD_PROBE_OK;
    }
    if ((info->type & GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM) != 0) {
        auto* const query = gst_pad_probe_info_get_query(info);
        GstCaps* caps = nullptr;
        if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION) {
            return GST_PAD_PROBE_OK;
        }
        gst_query_parse_allocation(query, &caps, nullptr);
        if (!isTooLarge(caps, guard)) {
            return GST_PAD_PROBE_OK;
        }
        gst_query_add_allocation_param(query, refusingAllocator(), nullptr);
        return GST_PAD_PROBE_HANDLED;
    }
    return guard.hasRefused() ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

void readBuffer(GstBuffer* buffer, PictureStream& pictures) {
    GstMapInfo bytes;
    if (gst_buffer_map(buffer, &bytes, GST_MAP_READ)) {
        pictures.read({bytes.data, bytes.size});
        gst_buffer_unmap(buffer, &bytes);
    }
}

void readPushed(GstPadProbeInfo& info, PictureStream& pictures) {
    if ((info.type & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
        readBuffer(gst_pad_probe_info_get_buffer(&info), pictures);
        return;
    }
    auto* const list = gst_pad_probe_info_get_buffer_list(&info);
    for (guint i = 0; i < gst_buffer_list_length(list); ++i) {
        readBuffer(gst_buffer_list_get(list, i), pictures);
    }
}

/// A decoder allocates a whole JPEG picture before the decoder names the picture's size, and shows a file that is cut
/// off as half a picture. Therefore the guard reads the headers before the decoder does.
GstPadProbeReturn onCompressed(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer data) {
    auto& [guard, pictures] = *static_cast<DecoderInput*>(data);
    if ((info->type & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) != 0) {
        if (GST_EVENT_TYPE(gst_pad_probe_info_get_event(info)) == GST_EVENT_EOS && pictures.isWithinFirstPicture()) {
            guard->refuse("the file ends within its picture.", "name a file that is neither damaged nor cut off");
        }
        return GST_PAD_PROBE_OK;
    }
    if ((info->type & GST_PAD_PROBE_TYPE_PUSH) != 0) {
        readPushed(*info, pictures);
    }
    return guard->hasRefused() ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

void watchInput(GstPad& pad, const SharedGuard& guard) {
    const Owned<GstCaps> taken{gst_pad_get_pad_template_caps(&pad)};
    const Owned<GstCaps> jpeg{gst_caps_from_string("image/jpeg")};
    const Owned<GstCaps> formats{gst_caps_from_string("image/jpeg; image/png; image/gif")};
    if (!gst_caps_is_any(taken.get()) && gst_caps_can_intersect(taken.get(), formats.get())) {
        const bool isJpeg = gst_caps_is_subset(taken.get(), jpeg.get()) != FALSE;
        const auto found = [guard](std::uint32_t width, std::uint32_t height) { guard->refusesSides(width, height); };
        gst_pad_add_probe(&pad, GST_PAD_PROBE_TYPE_DATA_DOWNSTREAM, onCompressed,
                          new DecoderInput{guard, PictureStream{isJpeg, found}}, releaseInput);
    }
}

void watchPad(GstElement* /*element*/, GstPad* pad, gpointer data) {
    const auto& guard = *static_cast<SharedGuard*>(data);
    if (gst_pad_get_direction(pad) == GST_PAD_SINK) {
        watchInput(*pad, guard);
        return;
    }
    for (const auto traffic : {GST_PAD_PROBE_TYPE_DATA_DOWNSTREAM, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM}) {
        gst_pad_add_probe(pad, traffic, onTraffic, new SharedGuard{guard}, releaseGuard);
    }
}

void watchElement(GstElement& element, const SharedGuard& guard) {
    // Connected first: a pad that comes meanwhile may be watched twice, and is never missed.
    auto* const data = new SharedGuard{guard};
    g_signal_connect_data(&element, "pad-added", G_CALLBACK(watchPad), data, releaseGuardOfSignal, GConnectFlags{});
    gst_element_foreach_pad(
        &element,
        [](GstElement* each, GstPad* pad, gpointer shared) -> gboolean {
            watchPad(each, pad, shared);
            return TRUE;
        },
        data);
}

void onElement(GstBin* /*pipeline*/, GstBin* /*parent*/, GstElement* element, gpointer guard) {
    watchElement(*element, *static_cast<SharedGuard*>(guard));
}

} // namespace

void guardPictures(GstBin& pipeline, std::function<void(std::string)> refused) {
    auto guard = std::make_shared<Guard>(std::move(refused));
    const Owned<GstIterator> elements{gst_bin_iterate_recurse(&pipeline)};
    gst_iterator_foreach(
        elements.get(),
        [](const GValue* element, gpointer shared) {
            watchElement(*GST_ELEMENT(g_value_get_object(element)), *static_cast<SharedGuard*>(shared));
        },
        &guard);
    g_signal_connect_data(&pipeline, "deep-element-added", G_CALLBACK(onElement), new SharedGuard{guard},
                          releaseGuardOfSignal, GConnectFlags{});
}

} // namespace kivo::platform
