#include "GstAdvice.hpp"

#include "GstOwned.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

constexpr std::string_view everyPackage = "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good";

/// The Debian packages of decoders, by the beginning of the formats' names. gstreamer1.0-libav has decoders for nearly
/// all other formats.
constexpr std::array decoderPackages{
    std::pair{"image/webp", "gstreamer1.0-plugins-bad"},     std::pair{"image/svg", "gstreamer1.0-plugins-bad"},
    std::pair{"video/x-av1", "gstreamer1.0-plugins-bad"},    std::pair{"video/mpegts", "gstreamer1.0-plugins-bad"},
    std::pair{"image/png", "gstreamer1.0-plugins-good"},     std::pair{"image/jpeg", "gstreamer1.0-plugins-good"},
    std::pair{"video/x-vp", "gstreamer1.0-plugins-good"},    std::pair{"video/quicktime", "gstreamer1.0-plugins-good"},
    std::pair{"video/webm", "gstreamer1.0-plugins-good"},    std::pair{"video/x-matroska", "gstreamer1.0-plugins-good"},
    std::pair{"video/x-theora", "gstreamer1.0-plugins-base"}};

/// The remedy for a missing decoder; `detail` names the format.
std::string decoderAdvice(std::string_view detail) {
    const auto* const known =
        std::ranges::find_if(decoderPackages, [&](const auto& each) { return detail.contains(each.first); });
    return std::string{"install the decoder (Debian: "} +
           (known == decoderPackages.end() ? "gstreamer1.0-libav" : known->second) + ")";
}

/// How many characters must be put in, left out or changed to make one word the other.
std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        auto diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const auto changed = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/// The installed element whose name is nearest to `name`, if only a slip of the hand apart.
std::optional<std::string> similarElement(std::string_view name) {
    std::optional<std::string> nearest;
    std::size_t limit = 3;
    auto* const features = gst_registry_get_feature_list(gst_registry_get(), GST_TYPE_ELEMENT_FACTORY);
    for (const auto* each = features; each != nullptr; each = each->next) {
        const std::string_view candidate{gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(each->data))};
        if (const auto apart = distance(name, candidate); apart < limit) {
            limit = apart;
            nearest = candidate;
        }
    }
    gst_plugin_feature_list_free(features);
    return nearest;
}

/// The remedy for an element that is not there; `message` has its name in quotation marks.
std::string elementAdvice(std::string_view message) {
    const auto begin = message.find('"') + 1;
    const auto similar = similarElement(message.substr(begin, message.find('"', begin) - begin));
    return "correct the element's name" + (similar ? " (\"" + *similar + "\" is there)" : std::string{}) +
           ", or install the GStreamer plugins with it (Debian: " + std::string{everyPackage} + ")";
}

/// `detail` tells more than the error's own message. `isFile`: the error comes from an element that reads a file.
std::string adviceFor(const GError& error, std::string_view detail, bool isFile) {
    const auto is = [&](GQuark domain, int code) { return error.domain == domain && error.code == code; };
    if (is(GST_PARSE_ERROR, GST_PARSE_ERROR_NO_SUCH_ELEMENT)) {
        return elementAdvice(error.message);
    }
    if (is(GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN) || is(GST_STREAM_ERROR, GST_STREAM_ERROR_CODEC_NOT_FOUND)) {
        return decoderAdvice(detail);
    }
    if (error.domain == GST_STREAM_ERROR &&
        (error.code == GST_STREAM_ERROR_WRONG_TYPE || error.code == GST_STREAM_ERROR_TYPE_NOT_FOUND ||
         error.code == GST_STREAM_ERROR_DECODE)) {
        return "name a file with pictures or video in it";
    }
    if (error.domain == GST_PARSE_ERROR) {
        return "correct the camera's pipeline; gst-launch-1.0 takes the same text";
    }
    if (error.domain == GST_RESOURCE_ERROR && isFile) {
        return "name a picture or video file that is there and that this user may read";
    }
    if (is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_BUSY)) {
        return "close the program that uses the camera";
    }
    if (is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND)) {
        return "connect the camera, or correct the camera's pipeline";
    }
    if (error.domain == GST_RESOURCE_ERROR) {
        return "check that the camera is connected, that no other program uses it, and that this user may (group "
               "\"video\")";
    }
    return "GST_DEBUG=3 in the environment shows more";
}

bool readsFile(GstObject* object) {
    auto* const factory = GST_IS_ELEMENT(object) ? gst_element_get_factory(GST_ELEMENT(object)) : nullptr;
    return factory != nullptr && std::string_view{GST_OBJECT_NAME(factory)} == "filesrc";
}

} // namespace

std::string describe(const GError& error) {
    return noPictures(error.message, adviceFor(error, {}, false));
}

std::string describe(GstMessage& message) {
    GError* error = nullptr;
    gchar* debug = nullptr;
    gst_message_parse_error(&message, &error, &debug);
    const Owned<GError> owned{error};
    const Owned<gchar> ownedDebug{debug};
    std::string problem{error->message};
    // The first line names a place in GStreamer's source; the other lines say what has happened.
    const std::string_view text{debug != nullptr ? debug : ""};
    const auto end = text.find('\n');
    const auto detail = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
    if (!detail.empty()) {
        problem.append(" (").append(detail).append(")");
    }
    return noPictures(problem, adviceFor(*error, detail, readsFile(GST_MESSAGE_SRC(&message))));
}

std::string noPictures(std::string_view problem, std::string_view remedy) {
    std::string text{"the camera gives no pictures: "};
    text.append(problem);
    std::ranges::replace(text, '\n', ' ');
    return text.append(" To do: ").append(remedy).append(".");
}

} // namespace kivo::platform
