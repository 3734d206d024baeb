#include "platform/camera/Modules.hpp"
#include "support/CameraView.hpp"

#include <gmock/gmock.h>

#include <cstdio>

namespace kivo::platform {
namespace {

using testing::ElementsAre;

/// What is read in one of the pictures of a camera that stands still.
std::vector<std::string> read(const VideoFrame& frame) {
    using enum MetadataObjectType;
    const auto module = codesModule();
    EXPECT_TRUE(module) << module.error();
    const auto reader = (*module)->makeReader();
    std::vector<std::string> texts;
    for (int picture = 0; picture < 5 && texts.empty(); ++picture) {
        for (const auto& object : reader->read(frame, {qr, ean8, ean13, pdf417})) {
            texts.push_back(object.text.value_or("unread"));
        }
    }
    return texts;
}

// docs/qr-scanning.md has this table.
TEST(CodeReader, ReadsPicturesAsACameraGivesThem) {
    struct Case {
        const char* name;
        test::Conditions conditions;
        bool isRead;
    };

    const Case cases[] = {
        {"straight", {}, true},
        {"turned by 30 degrees", {.turned = 30}, true},
        {"turned by 45 degrees", {.turned = 45}, true},
        {"upside down", {.turned = 180}, true},
        {"tilted by 30 degrees", {.tilted = 30}, true},
        {"tilted by 50 degrees", {.tilted = 50}, true},
        {"tilted by 30 and turned by 20 degrees", {.turned = 20, .tilted = 30}, true},
        {"blurred over 5 pixels", {.blur = 2}, true},
        {"blurred over 13 pixels", {.blur = 6}, false},
        {"noise of 40 of 255", {.noise = 40}, true},
        {"noise of 110 of 255", {.noise = 110}, false},
        {"small, 3 pixels a module", {.module = 3}, true},
        {"small, 2 pixels a module", {.module = 2}, true},
        {"small, 1 pixel a module", {.module = 1}, false},
        {"large, 16 pixels a module", {.module = 16}, true},
        {"pale, 90 on 160", {.black = 90, .white = 160}, true},
        {"very pale, 110 on 145", {.black = 110, .white = 145}, false},
        {"dark, 5 on 40", {.black = 5, .white = 40}, true},
        {"turned, tilted, blurred, noisy and pale",
         {.turned = 15, .tilted = 20, .blur = 1, .noise = 15, .black = 80, .white = 160},
         true},
        {"white on black", {.black = 235, .white = 20}, true},
    };
    const std::string payload = R"({"code":"123456"})";
    for (const auto& each : cases) {
        const auto texts = read(test::seen(payload, each.conditions));
        std::printf("| %s | %s |\n", each.name, texts.empty() ? "not read" : "read");
        EXPECT_EQ(texts, each.isRead ? std::vector{payload} : std::vector<std::string>{}) << each.name;
    }
}

TEST(CodeReader, PutsTheCodeNearestToTheMiddleFirst) {
    const auto left = test::seen("left", {.right = -170});
    EXPECT_THAT(read(test::overlaid(left, test::seen("right", {.right = 110}))), ElementsAre("right", "left"));
    EXPECT_THAT(read(test::overlaid(left, test::seen("right", {.right = 200}))), ElementsAre("left", "right"));
}

TEST(CodeReader, ReadsEveryFormatOfPicture) {
    auto frame = test::seen("text", {});
    auto gray = frame.bytes;
    frame.bytes = frame.rgb();
    frame.format = VideoFrame::Format::rgb;
    EXPECT_THAT(read(frame), ElementsAre("text"));
    gray.resize(gray.size() * 3 / 2, 200);
    EXPECT_THAT(read({.width = 640, .height = 480, .format = VideoFrame::Format::i420, .bytes = gray}),
                ElementsAre("text"));
    EXPECT_THAT(read({.width = 1, .height = 1, .format = VideoFrame::Format::gray, .bytes = {0}}), ElementsAre());
}

} // namespace
} // namespace kivo::platform
