#include "page/ZoneReader.hpp"

#include "reader/DrawnPage.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>

namespace kivo::reader {
namespace {

using platform::VideoFrame;
using test::DrawnPages;
using test::View;
using Lines = std::vector<std::string>;

const Lines passport{"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"};
const Lines td2{"I<UTOSTEVENSON<<PETER<JOHN<<<<<<<<<<", "D23145890<UTO3407127M95071227349<<<8"};
const Lines td1{"I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6", "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"};

// Sanitizers make recognition ten times as slow: there, each kind of picture is tried once.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KIVO_IS_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KIVO_IS_SANITIZED
#endif
#ifdef KIVO_IS_SANITIZED
constexpr bool isSlow = true;
#else
constexpr bool isSlow = false;
#endif

class ZoneReading : public testing::Test {
protected:
    void SetUp() override {
        try {
            pages = std::make_unique<DrawnPages>();
        } catch (const std::exception& error) {
            GTEST_SKIP() << error.what();
        }
    }

    std::unique_ptr<DrawnPages> pages;
    std::unique_ptr<ZoneReader> reader = ZoneReader::make();
};

// The same picture in colour: paper that is not white, in the order of the format's bytes.
VideoFrame coloured(const VideoFrame& gray, VideoFrame::Format format) {
    VideoFrame frame{.width = gray.width, .height = gray.height, .format = format, .bytes = {}};
    if (format == VideoFrame::Format::i420) {
        frame.bytes = gray.bytes;
        const auto colour =
            static_cast<std::size_t>((gray.width + 1) / 2) * static_cast<std::size_t>((gray.height + 1) / 2);
        frame.bytes.insert(frame.bytes.end(), colour * 2, 120);
        return frame;
    }
    for (const auto shade : gray.bytes) {
        frame.bytes.insert(frame.bytes.end(), {shade, static_cast<std::uint8_t>(shade * 9 / 10), shade});
    }
    return frame;
}

TEST_F(ZoneReading, ReadsPagesAsACameraGivesThem) {
    struct Row {
        const char* what;
        Lines lines;
        View view;
    };

    const std::vector<Row> rows{
        {"a passport", passport, {}},
        {"turned to the left", td1, {.size = 0.6, .rotation = -14}},
        {"turned to the right, in sharp letters", passport, {.size = 0.6, .rotation = 13, .hasSharpLetters = true}},
        {"upside down", td2, {.size = 0.7, .rotation = 180}},
        {"from the side", td2, {.size = 0.7, .slantToSide = 0.15, .slantToTop = -0.1}},
        {"blurred and small", passport, {.size = 0.6, .blur = 1.2}},
        {"noisy, in uneven light", td1, {.size = 0.6, .noise = 15, .shadow = 0.5}}};
    for (const auto& [what, lines, view] : rows) {
        if (isSlow && &view != &rows.front().view && &view != &rows.back().view) {
            continue;
        }
        const auto sight = reader->look(pages->frame(lines, view));
        ASSERT_TRUE(sight.zone) << what;
        EXPECT_EQ(sight.zone->lines, lines) << what;
        EXPECT_FALSE(sight.isTooDark) << what;
    }
}

TEST_F(ZoneReading, TakesEveryFormatOfPictures) {
    if (isSlow) {
        GTEST_SKIP() << "takes too long under a sanitizer";
    }
    const auto gray = pages->frame(passport, {});
    for (const auto format : {VideoFrame::Format::rgb, VideoFrame::Format::i420}) {
        const auto sight = reader->look(coloured(gray, format));
        ASSERT_TRUE(sight.zone);
        EXPECT_EQ(sight.zone->lines, passport);
    }
}

TEST_F(ZoneReading, SaysThatALightHelps) {
    EXPECT_TRUE(reader->look(pages->frame(passport, {.light = 0.12})).isTooDark);
}

TEST_F(ZoneReading, FindsNothingWhereNothingIs) {
    auto changed = passport;
    changed[1][43] = '1'; // a check digit
    EXPECT_FALSE(reader->look(pages->frame(changed, {})).zone);
    if (isSlow) {
        return;
    }
    const Lines words{std::string(44, 'A'), std::string(44, '7')};
    EXPECT_FALSE(reader->look(pages->frame(words, {})).zone);
}

TEST_F(ZoneReading, SurvivesPicturesOfAnySizeAndContent) {
    std::mt19937 random{7};
    for (const auto& [width, height] :
         std::vector<std::pair<int, int>>{{0, 0}, {1, 1}, {1, 8192}, {8192, 1}, {16, 16}, {640, 3}, {640, 480}}) {
        VideoFrame frame{.width = width, .height = height, .format = VideoFrame::Format::gray, .bytes = {}};
        frame.bytes.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        EXPECT_FALSE(reader->look(frame).zone); // black
        std::ranges::generate(frame.bytes, [&] { return static_cast<std::uint8_t>(random()); });
        EXPECT_FALSE(reader->look(frame).zone); // noise
        std::size_t at = 0;
        std::ranges::generate(frame.bytes, [&] { return static_cast<std::uint8_t>(at++ / 7 % 2 * 255); });
        EXPECT_FALSE(reader->look(frame).zone); // bars
        frame.bytes.resize(frame.bytes.size() / 2);
        EXPECT_FALSE(reader->look(frame).zone); // too few bytes
    }
}

} // namespace
} // namespace kivo::reader
