#include "tlv/Tlv.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

using testing::ElementsAreArray;

TEST(Tlv, ReadsTagsAndLengthsOfEachForm) {
    const struct {
        Bytes bytes;
        std::uint32_t tag;
        Bytes value;
    } rows[] = {
        {{0x5A, 0x02, 1, 2, 0xFF}, 0x5A, {1, 2}},
        {{0x7F, 0x49, 0x81, 0x01, 7}, 0x7F49, {7}},
        {{0x5F, 0x81, 0x02, 0x82, 0x00, 0x01, 9}, 0x5F8102, {9}},
        {{0x04, 0x00}, 0x04, {}},
    };

    for (const auto& row : rows) {
        const auto object = firstTlv(row.bytes);
        ASSERT_TRUE(object);
        EXPECT_EQ(object->tag, row.tag);
        EXPECT_THAT(object->value, ElementsAreArray(row.value));
    }
}

TEST(Tlv, RefusesWhatIsCutOffOrTooLong) {
    const Bytes rows[] = {
        {},
        {0x5F},
        {0x5A},
        {0x5A, 0x03, 1, 2},
        {0x5A, 0x80, 0, 0},
        {0x5A, 0x82, 0x01},
        {0x5A, 0x85, 0, 0, 0, 0, 0},
        {0x5A, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 1},
        {0x5F, 0x81, 0x81, 0x81, 0x01, 0x00},
    };
    for (const auto& row : rows) {
        EXPECT_FALSE(firstTlv(row)) << testing::PrintToString(row);
    }
    Bytes many;
    for (int i = 0; i < 65; ++i) {
        many.insert(many.end(), {0x04, 0x00});
    }
    EXPECT_FALSE(allTlv(many));
    EXPECT_EQ(allTlv(ByteView{many}.first(128))->size(), 64U);
    EXPECT_FALSE(allTlv(ByteView{many}.first(3)));
}

TEST(Tlv, WritesWhatItReads) {
    for (const auto size : std::initializer_list<std::size_t>{0, 1, 127, 128, 255, 256, 65535, 65536}) {
        const Bytes value(size, 0xA5);
        const auto bytes = encodedTlv(0x7F4E, value);
        const auto object = firstTlv(bytes);
        ASSERT_TRUE(object) << size;
        EXPECT_EQ(object->size, bytes.size());
        EXPECT_THAT(object->value, ElementsAreArray(value));
        EXPECT_EQ(bytes.size() - size, 2 + (size < 128 ? 1U : size < 256 ? 2U : size < 65536 ? 3U : 4U));
    }
}

} // namespace
} // namespace kivo::reader
