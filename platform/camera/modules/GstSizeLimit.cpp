#include "GstSizeLimit.hpp"

#include "GstAdvice.hpp"
#include "GstOwned.hpp"

#include <kivo/platform/VideoFrame.hpp>

#include <atomic>
#include <utility>

namespace kivo::platform {
namespace {

/// The limit of one pipeline, shared by the callbacks of the pipeline's pads.
struct Limit {
    std::function<void(std::string)> refused;
    std::atomic<bool> hasRefused = false;
};

using SharedLimit = std::shared_ptr<Limit>;

void releaseLimit(gpointer limit) {
    delete static_cast<SharedLimit*>(limit);
}

void releaseLimitOfSignal(gpointer limit, GClosure* /*closure*/) {
    releaseLimit(limit);
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
bool isTooLarge(const GstCaps* caps, Limit& limit) {
    if (caps == nullptr || gst_caps_get_size(caps) == 0) {
        return false;
    }
    const auto* const form = gst_caps_get_structure(caps, 0);
    int width = 0;
    int height = 0;
    if (!gst_structure_get_int(form, "width", &width) || !gst_structure_get_int(form, "height", &height) ||
        (width <= VideoFrame::largestSide && height <= VideoFrame::largestSide)) {
        return false;
    }
    if (!limit.hasRefused.exchange(true)) {
        const auto side = std::to_string(VideoFrame::largestSide);
        limit.refused(noPictures("a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                                     " pixels is too large.",
                                 "make the picture smaller; " + side + " x " + side + " pixels are read at most"));
    }
    return true;
}

GstPadProbeReturn onTraffic(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer data) {
    auto& limit = **static_cast<SharedLimit*>(data);
    if ((info->type & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) != 0) {
        auto* const event = gst_pad_probe_info_get_event(info);
        GstCaps* caps = nullptr;
        if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
            gst_event_parse_caps(event, &caps);
            isTooLarge(caps, limit);
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
        if (!isTooLarge(caps, limit)) {
            return GST_PAD_PROBE_OK;
        }
        gst_query_add_allocation_param(query, refusingAllocator(), nullptr);
        return GST_PAD_PROBE_HANDLED;
    }
    return limit.hasRefused ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

void watchPad(GstElement* /*element*/, GstPad* pad, gpointer limit) {
    if (gst_pad_get_direction(pad) == GST_PAD_SRC) {
        constexpr auto traffic = static_cast<GstPadProbeType>(
            GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM | GST_PAD_PROBE_TYPE_BUFFER);
        gst_pad_add_probe(pad, traffic, onTraffic, new SharedLimit{*static_cast<SharedLimit*>(limit)}, releaseLimit);
    }
}

void watchElement(GstElement& element, const SharedLimit& limit) {
    // Connected first: a pad that comes meanwhile may be watched twice, and is never missed.
    auto* const data = new SharedLimit{limit};
    g_signal_connect_data(&element, "pad-added", G_CALLBACK(watchPad), data, releaseLimitOfSignal, GConnectFlags{});
    gst_element_foreach_src_pad(
        &element,
        [](GstElement* each, GstPad* pad, gpointer shared) -> gboolean {
            watchPad(each, pad, shared);
            return TRUE;
        },
        data);
}

void onElement(GstBin* /*pipeline*/, GstBin* /*parent*/, GstElement* element, gpointer limit) {
    watchElement(*element, *static_cast<SharedLimit*>(limit));
}

} // namespace

void limitPictures(GstBin& pipeline, std::function<void(std::string)> refused) {
    auto limit = std::make_shared<Limit>();
    limit->refused = std::move(refused);
    const Owned<GstIterator> elements{gst_bin_iterate_recurse(&pipeline)};
    gst_iterator_foreach(
        elements.get(),
        [](const GValue* element, gpointer shared) {
            watchElement(*GST_ELEMENT(g_value_get_object(element)), *static_cast<SharedLimit*>(shared));
        },
        &limit);
    g_signal_connect_data(&pipeline, "deep-element-added", G_CALLBACK(onElement), new SharedLimit{limit},
                          releaseLimitOfSignal, GConnectFlags{});
}

} // namespace kivo::platform
