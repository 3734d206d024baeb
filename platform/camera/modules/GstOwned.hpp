#pragma once

#include <gst/gst.h>

#include <memory>

namespace kivo::platform {

struct Unref {
    void operator()(void* object) const { gst_object_unref(object); }

    void operator()(GError* error) const { g_error_free(error); }

    void operator()(gchar* text) const { g_free(text); }

    void operator()(GstSample* sample) const { gst_sample_unref(sample); }

    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }

    void operator()(GstIterator* iterator) const { gst_iterator_free(iterator); }

    void operator()(GstQuery* query) const { gst_query_unref(query); }
};

template <class Object>
using Owned = std::unique_ptr<Object, Unref>;

} // namespace kivo::platform
