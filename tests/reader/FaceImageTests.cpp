#include "files/FaceImage.hpp"

#include "reader/EncodedPictures.hpp"
#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace kivo::reader {
namespace {

constexpr int width = 48;
constexpr int height = 32;

// A picture whose channels differ, so that swapped ones show.
platform::VideoFrame slope() {
    platform::VideoFrame frame{
        .width = width, .height = height, .format = platform::VideoFrame::Format::rgb, .bytes = {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            frame.bytes.push_back(static_cast<std::uint8_t>(x * 5));
            frame.bytes.push_back(static_cast<std::uint8_t>(y * 7));
            frame.bytes.push_back(128);
        }
    }
    return frame;
}

int largestDifference(const platform::VideoFrame& one, const platform::VideoFrame& other) {
    int largest = 0;
    for (std::size_t i = 0; i < one.bytes.size(); ++i) {
        largest = std::max(largest, std::abs(one.bytes[i] - other.bytes[i]));
    }
    return largest;
}

TEST(FaceImage, IsDecoded) {
    const auto frame = slope();
    const std::vector<std::pair<std::string, Bytes>> rows{{"JPEG", jpegOf(frame)},
                                                          {"codestream", jpeg2000Of(frame)},
                                                          {"codestream of tiles", jpeg2000Of(frame, 24)},
                                                          {"JP2", jp2Of(jpeg2000Of(frame))}};
    for (const auto& [name, bytes] : rows) {
        const auto decoded = decodedImage(bytes);
        ASSERT_TRUE(decoded) << name;
        EXPECT_EQ(decoded->width, width);
        EXPECT_EQ(decoded->height, height);
        EXPECT_TRUE(decoded->isWhole());
        EXPECT_LE(largestDifference(frame, *decoded), 12) << name;
    }
}

TEST(FaceImage, RefusesWhatIsCutOffOrNoPicture) {
    for (const auto& whole : {jpegOf(slope()), jpeg2000Of(slope()), jp2Of(jpeg2000Of(slope()))}) {
        for (std::size_t size = 0; size + 2 < whole.size(); size += 7) {
            EXPECT_FALSE(decodedImage(ByteView{whole}.first(size))) << size << " of " << whole.size();
        }
    }
    const auto zone = fileOf("bsi-sample-2008/EF.DG1.bin");
    EXPECT_FALSE(decodedImage(zone));
    EXPECT_FALSE(decodedImage(Bytes(largestFaceBytes + 1, 0xFF)));
}

TEST(FaceImage, RefusesPicturesThatWouldTakeMuchMemoryOrTime) {
    struct Row {
        const char* what;
        Bytes bytes;
        std::size_t at;
        std::string hex;
    };

    const auto stream = jpeg2000Of(slope());
    const auto jpeg = jpegOf(slope());
    const auto coding =
        static_cast<std::size_t>(std::ranges::search(stream, bytesOfHex("ff52")).begin() - stream.begin());
    const auto frame = static_cast<std::size_t>(std::ranges::search(jpeg, bytesOfHex("ffc0")).begin() - jpeg.begin());
    const std::vector<Row> rows{{"a side of 65535", stream, 8, "0000ffff"},
                                {"4096 by 4096", stream, 8, "0000100000001000"},
                                {"width below 0", stream, 16, "0000ffff"},
                                {"tiles of one pixel", stream, 24, "0000000100000001"},
                                {"tiles of nothing", stream, 24, "00000000"},
                                {"more tiles than a number counts", stream, 8,
                                 "fffffffffffffffffffffff0fffffff000000001000000010000000000000000"},
                                {"16384 components", stream, 40, "4000"},
                                {"components of 38 bits", stream, 42, "25"},
                                {"components of a tenth", stream, 43, "0a"},
                                {"65535 layers", stream, coding + 6, "ffff"},
                                {"32 levels", stream, coding + 9, "20"},
                                {"precincts of one pixel", stream, coding + 4, "01"},
                                {"no JPEG 2000 size", stream, 2, "ff52"},
                                {"a JPEG of 65535", jpeg, frame + 5, "ffffffff"},
                                {"a JPEG of no width", jpeg, frame + 7, "0000"}};
    for (const auto& [what, bytes, at, hex] : rows) {
        auto broken = bytes;
        ASSERT_TRUE(decodedImage(broken));
        std::ranges::copy(bytesOfHex(hex), broken.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_FALSE(decodedImage(broken)) << what;
    }
}

TEST(FaceImage, TakesSoManyPixelsAndNoMore) {
    for (const int rows : {1024, 1025}) {
        platform::VideoFrame frame{
            .width = largestFaceSide, .height = rows, .format = platform::VideoFrame::Format::rgb, .bytes = {}};
        frame.bytes.resize(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(rows) * 3, 90);
        EXPECT_EQ(decodedImage(jpegOf(frame)).has_value(), rows == 1024);
    }
}

} // namespace
} // namespace kivo::reader
