#include "platform/camera/Modules.hpp"

#include <kivo/simulator/Camera.hpp>

#include <gtest/gtest.h>

#include <algorithm>

namespace kivo::platform {
namespace {

using Format = VideoFrame::Format;

/// What is read in one of the pictures of a camera that stands still.
std::string read(const VideoFrame& frame) {
    const auto module = codesModule();
    EXPECT_TRUE(module) << module.error();
    const auto reader = (*module)->makeReader();
    for (int picture = 0; picture < 5; ++picture) {
        for (const auto& object : reader->read(frame, {MetadataObjectType::qr})) {
            return object.text.value_or("unread");
        }
    }
    return "nothing";
}

TEST(CodeReader, ReadsEveryFormatOfPictureEitherWayRound) {
    const auto gray = simulator::qrCodeFrame("text");
    auto inverted = gray;
    std::ranges::transform(gray.bytes, inverted.bytes.begin(), [](auto byte) { return ~byte; });
    auto upright = gray;
    std::swap(upright.width, upright.height);
    for (int y = 0; y < upright.height; ++y) {
        for (int x = 0; x < upright.width; ++x) {
            upright.bytes[static_cast<std::size_t>(y * upright.width + x)] =
                gray.bytes[static_cast<std::size_t>((gray.height - 1 - x) * gray.width + y)];
        }
    }
    auto i420 = gray;
    i420.format = Format::i420;
    i420.bytes.resize(gray.bytes.size() * 3 / 2, 200);
    for (const auto& frame :
         {gray,
          inverted,
          upright,
          i420,
          {.width = gray.width, .height = gray.height, .format = Format::rgb, .bytes = gray.rgb()}}) {
        EXPECT_EQ(read(frame), "text");
    }
    EXPECT_EQ(read({.width = 1, .height = 1, .format = Format::gray, .bytes = {0}}), "nothing");
}

} // namespace
} // namespace kivo::platform
