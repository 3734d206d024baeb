#include "reading/FileReader.hpp"

#include "reader/ScriptedCard.hpp"
#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace kivo::reader {
namespace {

// A chip without access control that holds one file, and has these habits.
struct OpenChip {
    Bytes file{};
    /// The most bytes that an answer has.
    std::size_t most = 65536;
    bool refusesLong = false;
    /// Tells the end of the file with the last bytes.
    bool tellsTheEnd = false;
    /// Commands, and the longest answer.
    int commands = 0;
    std::size_t longest = 0;

    Bytes answer(ByteView command) {
        ++commands;
        if (command[1] == 0xA4) {
            return file.empty() ? Bytes{0x6A, 0x82} : Bytes{0x90, 0x00};
        }
        const bool isLong = command.size() > 5 && command[4] == 0;
        if (isLong && refusesLong) {
            return {0x67, 0x00};
        }
        std::size_t offset = static_cast<std::size_t>(command[2] << 8 | command[3]);
        std::size_t expected = isLong ? static_cast<std::size_t>(command[command.size() - 2] << 8) : 0;
        expected += command.back();
        expected = expected == 0 ? (isLong ? 65536 : 256) : expected;
        if (command[1] == 0xB1) {
            const auto object = firstTlv(command.subspan(isLong ? 7 : 5));
            EXPECT_TRUE(object && object->tag == 0x54);
            offset = 0;
            for (const auto byte : object->value) {
                offset = offset << 8 | byte;
            }
            expected -= 4;
        }
        if (offset >= file.size()) {
            return {0x6B, 0x00};
        }
        const auto count = std::min({expected, most, file.size() - offset});
        const auto first = file.begin() + static_cast<std::ptrdiff_t>(offset);
        Bytes data{first, first + static_cast<std::ptrdiff_t>(count)};
        longest = std::max(longest, data.size());
        if (command[1] == 0xB1) {
            data = encodedTlv(0x53, data);
        }
        const bool isEnd = tellsTheEnd && offset + count == file.size();
        return joined({data, isEnd ? Bytes{0x62, 0x82} : Bytes{0x90, 0x00}});
    }
};

Bytes faceFile(std::size_t size) {
    Bytes content(size);
    for (std::size_t i = 0; i < size; ++i) {
        content[i] = static_cast<std::uint8_t>(i * 31 + i / 256);
    }
    return encodedTlv(0x75, content);
}

TEST(FileReader, ReadsWholeFilesWithAnyHabitOfAChip) {
    const struct {
        const char* what;
        OpenChip chip;
        bool takesLong;
        std::size_t longestAnswer;
        int mostCommands;
    } rows[] = {
        {"short", {.file = faceFile(1000)}, false, 256, 7},
        {"long", {.file = faceFile(1000)}, true, 4096, 3},
        {"in one go", {.file = faceFile(20000)}, true, 65536, 3},
        {"beyond the short offsets", {.file = faceFile(70000)}, true, 4096, 20},
        {"beyond the short offsets, short", {.file = faceFile(34000)}, false, 256, 140},
        {"less than asked for", {.file = faceFile(3000), .most = 100}, true, 4096, 33},
        {"less than asked for, far out", {.file = faceFile(70000), .most = 3000}, true, 4096, 28},
        {"long refused", {.file = faceFile(1000), .refusesLong = true}, true, 4096, 8},
        {"end told", {.file = faceFile(1000), .tellsTheEnd = true}, true, 4096, 3},
        {"trailing bytes", {.file = joined({faceFile(100), Bytes(50)})}, false, 256, 3},
        {"tiny", {.file = faceFile(3)}, false, 256, 2},
    };

    for (auto row : rows) {
        PlayedCard card{[&](ByteView command) { return row.chip.answer(command); }};
        auto channel = channelTo(card);
        channel.capabilities() = {.takesLongMessages = row.takesLong, .longestAnswer = row.longestAnswer};
        FileReader reader{channel};
        std::size_t told = 0;
        const auto file = reader.read(DocumentFile::dg2, [&](std::size_t count, std::size_t all) {
            EXPECT_LE(count, all);
            EXPECT_GE(count, told);
            told = count;
        });
        ASSERT_TRUE(file && *file) << row.what;
        EXPECT_EQ(**file, (Bytes{row.chip.file.begin(), row.chip.file.begin() + std::ssize(**file)})) << row.what;
        EXPECT_EQ((*file)->size(), told);
        EXPECT_LE(row.chip.commands, row.mostCommands) << row.what;
        EXPECT_LE(row.chip.longest, row.longestAnswer);
    }
}

TEST(FileReader, EndsWithAFileThatBreaksARule) {
    const struct {
        const char* what;
        Bytes head;
        Bytes rest;
        std::expected<std::optional<Bytes>, ChipFault> expected;
    } rows[] = {
        {"another tag", {0x61, 0x05, 1, 2, 3, 4, 5, 0, 0x90, 0x00}, {}, std::unexpected{ChipFault::broken}},
        {"16 MiB", {0x75, 0x83, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0x90, 0x00}, {}, std::unexpected{ChipFault::broken}},
        {"201 KiB", {0x75, 0x83, 0x03, 0x24, 0x00, 0, 0, 0, 0x90, 0x00}, {}, std::unexpected{ChipFault::broken}},
        {"4 GiB", {0x75, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0x90, 0x00}, {}, std::unexpected{ChipFault::broken}},
        {"half a head", {0x75, 0x82, 0x90, 0x00}, {}, std::unexpected{ChipFault::broken}},
        {"nothing", {0x90, 0x00}, {}, std::unexpected{ChipFault::broken}},
        {"more than asked for", joined({Bytes(9, 0x75), {0x90, 0x00}}), {}, std::unexpected{ChipFault::broken}},
        {"end too early", {0x75, 0x10, 0, 0, 0, 0, 0, 0, 0x90, 0x00}, {0x6B, 0x00}, std::unexpected{ChipFault::broken}},
        {"nothing more", {0x75, 0x10, 0, 0, 0, 0, 0, 0, 0x90, 0x00}, {0x90, 0x00}, std::unexpected{ChipFault::broken}},
        {"not allowed", {0x69, 0x82}, {}, std::unexpected{ChipFault::denied}},
    };

    for (const auto& row : rows) {
        int step = 0;
        PlayedCard card{[&](ByteView) -> std::expected<Bytes, CardError> {
            ++step;
            return step == 1 ? Bytes{0x90, 0x00} : step == 2 ? row.head : row.rest;
        }};
        auto channel = channelTo(card);
        EXPECT_EQ(FileReader{channel}.read(DocumentFile::dg2), row.expected) << row.what;
        EXPECT_LE(step, 3) << row.what;
    }
    OpenChip without;
    PlayedCard card{[&](ByteView command) { return without.answer(command); }};
    auto channel = channelTo(card);
    EXPECT_EQ(FileReader{channel}.read(DocumentFile::dg2), std::nullopt);
}

TEST(FileReader, BoundsAllFilesTogether) {
    OpenChip chip{.file = faceFile(200000)};
    PlayedCard card{[&](ByteView command) { return chip.answer(command); }};
    auto channel = channelTo(card);
    channel.capabilities() = {.takesLongMessages = true, .longestAnswer = 65536};
    FileReader reader{channel};
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(reader.read(DocumentFile::dg2));
    }
    EXPECT_EQ(reader.read(DocumentFile::dg2).error(), ChipFault::broken);
}

} // namespace
} // namespace kivo::reader
