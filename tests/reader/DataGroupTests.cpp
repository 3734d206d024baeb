#include "files/DataGroups.hpp"
#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

Bytes operator+(Bytes one, const Bytes& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

Bytes object(std::uint32_t tag, std::string_view text) {
    return encodedTlv(tag, Bytes{text.begin(), text.end()});
}

// DG2 with one face record of ISO/IEC 19794-5.
Bytes faceFile(const Bytes& image, std::uint8_t points = 0, std::uint8_t kind = 0, std::uint32_t blockTag = 0x5F2E) {
    const auto size = static_cast<std::uint8_t>(20U + points * 8U + 12U + image.size());
    auto record = bytesOfHex("46414300303130000000000000010000");
    record = record + Bytes{0, size, 0, points} + Bytes(14 + points * 8U) + Bytes{1, kind, 1, 0x9D, 2, 0x13} + Bytes(6);
    record = record + image;
    return encodedTlv(0x75,
                      encodedTlv(0x7F61, encodedTlv(0x02, Bytes{1}) +
                                             encodedTlv(0x7F60, encodedTlv(0xA1, {}) + encodedTlv(blockTag, record))));
}

const Bytes image{0xFF, 0xD8, 0xFF, 0xE0, 1, 2, 3};

TEST(DataGroups, ListWhatTheChipHolds) {
    const auto com = comOf(fileOf("bsi-sample-2008/EF.COM.bin"));
    ASSERT_TRUE(com);
    EXPECT_EQ(com->ldsVersion, "0107");
    EXPECT_EQ(com->unicodeVersion, "040000");
    EXPECT_EQ(com->groups, (std::vector{1, 2, 3, 14}));
}

TEST(DataGroups, HoldTheZone) {
    const auto zone = zoneOf(fileOf("bsi-sample-2008/EF.DG1.bin"));
    ASSERT_TRUE(zone);
    EXPECT_EQ(zone->documentNumber, "C11T002JM");
    EXPECT_EQ(zone->primaryIdentifier, "MUSTERMANN");
    const auto zones = vectors("zones");
    for (const auto& id : {"td1-long-19", "td2-d2-long"}) {
        for (const auto& document : zones.at("documents")) {
            if (document["id"] == id) {
                std::string text;
                for (const auto& line : document["lines"]) {
                    text += line;
                }
                EXPECT_EQ(zoneOf(encodedTlv(0x61, object(0x5F1F, text)))->documentNumber,
                          document["document_number"].get<std::string>());
            }
        }
    }
}

TEST(DataGroups, HoldAFace) {
    struct Row {
        std::uint8_t points;
        std::uint8_t kind;
        std::uint32_t blockTag;
    };

    for (const auto& [points, kind, tag] : {Row{0, 0, 0x5F2E}, Row{0, 1, 0x7F2E}, Row{3, 0, 0x5F2E}}) {
        const auto face = faceOf(faceFile(image, points, kind, tag));
        ASSERT_TRUE(face);
        EXPECT_EQ(face->image, image);
        EXPECT_EQ(face->kind, kind == 0 ? FaceRecord::Kind::jpeg : FaceRecord::Kind::jpeg2000);
        EXPECT_EQ(face->width, 413);
        EXPECT_EQ(face->height, 531);
    }
    EXPECT_EQ(signatureImageOf(encodedTlv(0x67, encodedTlv(0x02, Bytes{1}) + encodedTlv(0x5F43, image))), image);
}

TEST(DataGroups, AddToPersonAndDocument) {
    const auto person = personOf(encodedTlv(
        0x6B, object(0x5C, "\x5F\x0E\x5F\x2B") + object(0x5F0E, "M\xC3\x9CLLER<<ANNA<MARIA<<<") +
                  encodedTlv(0xA0, encodedTlv(0x02, Bytes{2}) + object(0x5F0F, "MEIER<<ANNA") + object(0x5F0F, "M")) +
                  encodedTlv(0x5F2B, bytesOfHex("19740812")) + object(0x5F42, "1 ROAD<<TOWN") +
                  object(0x5F12, "+49\n30")));
    ASSERT_TRUE(person);
    EXPECT_EQ(person->fullName, "M\xC3\x9CLLER, ANNA MARIA");
    EXPECT_EQ(person->otherNames, (std::vector<std::string>{"MEIER, ANNA", "M"}));
    EXPECT_EQ(person->dateOfBirth, "19740812");
    EXPECT_EQ(person->address, "1 ROAD, TOWN");
    EXPECT_EQ(person->telephone, "+4930");
    EXPECT_EQ(person->title, "");
    const auto details = detailsOf(encodedTlv(0x6C, object(0x5F19, "UTOPIA") + object(0x5F26, "20120415")));
    ASSERT_TRUE(details);
    EXPECT_EQ(details->authority, "UTOPIA");
    EXPECT_EQ(details->dateOfIssue, "20120415");
}

TEST(DataGroups, MakeTextsOfForeignBytesHarmless) {
    const std::vector<std::pair<std::string, std::string>> rows{
        {"A\x80Z", "A?Z"},                  // no start of a character
        {"A\xC3", "A?"},                    // cut off
        {"\xC0\xAF", "??"},                 // longer than need be
        {"\xED\xA0\x80", "???"},            // half of a pair
        {"\xF5\x80\x80\x80", "????"},       // above the last plane
        {"A\x1B[2J\x7F\xC2\x9BZ", "A[2JZ"}, // what a terminal would obey
        {std::string(5000, 'A'), std::string(1022, 'A')}};
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(detailsOf(encodedTlv(0x6C, object(0x5F19, bytes)))->authority, text);
    }
}

TEST(DataGroups, RefuseWhatIsCutOffOrOfAnotherKind) {
    const auto com = fileOf("bsi-sample-2008/EF.COM.bin");
    const auto dg1 = fileOf("bsi-sample-2008/EF.DG1.bin");
    const auto face = faceFile(image, 2);
    for (std::size_t size = 0; size < face.size(); ++size) {
        EXPECT_FALSE(comOf(ByteView{com}.first(std::min(size, com.size() - 1))));
        EXPECT_FALSE(zoneOf(ByteView{dg1}.first(std::min(size, dg1.size() - 1))));
        EXPECT_FALSE(faceOf(ByteView{face}.first(size)));
    }
    EXPECT_FALSE(comOf(dg1));
    EXPECT_FALSE(zoneOf(com));
    EXPECT_FALSE(personOf(dg1) || detailsOf(dg1) || signatureImageOf(dg1));
    EXPECT_FALSE(comOf(encodedTlv(0x60, object(0x5C, "\x61\x61")))) << "a group twice";
    EXPECT_FALSE(comOf(encodedTlv(0x60, object(0x5C, "\x62")))) << "no group";
    // Sizes in the record that lead past its end, and a record without faces.
    for (const auto& [at, value] :
         std::vector<std::pair<std::size_t, std::uint8_t>>{{14, 0xFF}, {17, 0x1F}, {19, 0xFF}, {13, 0}, {4, '2'}}) {
        auto broken = face;
        const auto record = std::ranges::search(broken, bytesOfHex("46414300")).begin();
        *(record + static_cast<std::ptrdiff_t>(at)) = value;
        EXPECT_FALSE(faceOf(broken)) << at;
    }
}

} // namespace
} // namespace kivo::reader
