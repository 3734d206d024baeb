#include "files/Zone.hpp"

#include "reader/Vectors.hpp"

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

using platform::readid::DocumentType;

const nlohmann::json& zones() {
    static const auto data = vectors("zones");
    return data;
}

std::vector<std::string> specimen(std::string_view id) {
    for (const auto& document : zones()["documents"]) {
        if (document["id"] == id) {
            return document["lines"];
        }
    }
    ADD_FAILURE() << "no specimen " << id;
    return {};
}

TEST(Zone, TakesTheSpecimensApart) {
    for (const auto& document : zones()["documents"]) {
        SCOPED_TRACE(document["id"].get<std::string>());
        const std::string format = document["format"];
        const auto zone = parsedZone(document["lines"]);
        ASSERT_EQ(zone.has_value(), document["all_check_digits_valid"].get<bool>() && !format.starts_with("MRV"));
        if (!zone) {
            continue;
        }
        const std::map<std::string, DocumentType> types{{"TD1", DocumentType::identityCardTD1},
                                                        {"TD2", DocumentType::identityCardTD2},
                                                        {"TD3", DocumentType::passport}};
        EXPECT_EQ(zone->type, types.at(format));
        EXPECT_EQ(zone->documentCode, document["document_code"].get<std::string>());
        EXPECT_EQ(zone->issuer, document["issuing_state"].get<std::string>());
        EXPECT_EQ(zone->nationality, document["nationality"].get<std::string>());
        EXPECT_EQ(zone->documentNumber, document["document_number"].get<std::string>());
        EXPECT_EQ(zone->dateOfBirth, document["date_of_birth"].get<std::string>());
        EXPECT_EQ(zone->dateOfExpiry, document["date_of_expiry"].get<std::string>());
        EXPECT_EQ(zone->sex, document["sex"] == "<" ? "" : document["sex"].get<std::string>());
        EXPECT_EQ(zone->primaryIdentifier, document["primary_identifier"].get<std::string>());
        EXPECT_EQ(zone->secondaryIdentifier, document["secondary_identifier"].get<std::string>());
        EXPECT_EQ(zone->optionalData, document.value("optional_data", ""));
    }
}

TEST(Zone, SplitsNamesThatAreLongOrCutOff) {
    const std::map<std::string, std::pair<std::string, std::size_t>> places{
        {"TD1", {"td1-eriksson", 2}}, {"TD2", {"td2-eriksson", 0}}, {"TD3", {"td3-eriksson", 0}}};
    for (const auto& name : zones()["names"]) {
        const std::string field = name["name_field"];
        SCOPED_TRACE(field);
        const auto& [id, line] = places.at(name["format"]);
        auto lines = specimen(id);
        lines[line].replace(lines[line].size() - field.size(), field.size(), field);
        const auto zone = parsedZone(lines);
        ASSERT_TRUE(zone);
        EXPECT_EQ(zone->primaryIdentifier, name["primary_identifier"].get<std::string>());
        EXPECT_EQ(zone->secondaryIdentifier, name["secondary_identifier"].get<std::string>());
    }
}

TEST(Zone, ComputesCheckDigits) {
    for (const auto& example : zones()["check_digits"]) {
        EXPECT_EQ(checkDigit(example["input"].get<std::string>()), example["check_digit"].get<std::string>().front());
    }
    EXPECT_FALSE(checkDigit("12a"));
}

TEST(Zone, RefusesWhatNoCheckDigitWouldFind) {
    // A byte of no zone, with zero bytes for the check digits over the byte.
    const std::string foreign{"\xFF<<<<<<<<<<<<<\0\0", 16};
    // A change of one place each, in fields that no check digit covers or that agree by chance.
    const std::vector<std::tuple<std::string, std::size_t, std::size_t, std::string>> changes{
        {"td3-eriksson", 0, 0, "1"},       {"td3-eriksson", 0, 0, "V"},       {"td3-eriksson", 0, 0, "<"},
        {"td3-eriksson", 0, 2, "<"},       {"td3-eriksson", 0, 7, "0"},       {"td3-eriksson", 0, 5, "<"},
        {"td3-eriksson", 1, 11, "7"},      {"td3-eriksson", 1, 20, "P"},      {"td3-eriksson", 0, 9, "e"},
        {"td3-eriksson", 1, 13, "741312"}, {"td3-eriksson", 1, 13, "740832"}, {"td3-eriksson", 1, 13, "7<0812"},
        {"td3-eriksson", 1, 28, foreign}};
    for (const auto& [id, line, at, text] : changes) {
        auto lines = specimen(id);
        lines[line].replace(at, text.size(), text);
        if (text.size() == 6) { // a date, with the check digits as they would be
            lines[line][at + 6] = *checkDigit(text);
            lines[1][43] = *checkDigit(lines[1].substr(0, 10) + lines[1].substr(13, 7) + lines[1].substr(21, 22));
        }
        EXPECT_FALSE(parsedZone(lines)) << lines[0] << '\n' << lines[1];
    }
}

TEST(Zone, RefusesLinesOfOtherSizes) {
    const auto lines = specimen("td3-eriksson");
    const std::vector<std::vector<std::string>> refused{{},
                                                        {""},
                                                        {"", ""},
                                                        {lines[0]},
                                                        {lines[0], lines[1], lines[0]},
                                                        {lines[0], lines[1].substr(1)},
                                                        {std::string(44, '<'), std::string(44, '<')},
                                                        {std::string(30, 'A'), std::string(30, 'A'), ""},
                                                        {std::string(100'000, '<'), lines[1]}};
    for (const auto& each : refused) {
        EXPECT_FALSE(parsedZone(each));
        EXPECT_FALSE(repairedZone(each));
    }
    EXPECT_FALSE(parsedZone({lines[0] + "<", lines[1]}));
}

TEST(Zone, UndoesTheMistakesOfRecognition) {
    struct Row {
        std::string_view id;
        std::vector<std::string> seen;
    };

    const std::vector<Row> rows{
        // Letters and digits that look alike, in fields of one kind.
        {"td3-eriksson",
         {"P<UT0ER1K5S0N<<ANNA<MAR1A<<<<<<<<<<<<<<<<<<<", "L898902C36UT074O8I2ZF12O4IS9ZE184226B<<<<<IO"}},
        // In the number, where both stand.
        {"td3-eriksson",
         {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L8989O2C36UTO7408122F1204159ZE184226B<<<<<10"}},
        {"td3-eriksson",
         {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L8989O2C36UTO74O8122F1204I59ZE184226B<<<<<1O"}},
        // Fillers miscounted, or taken for letters.
        {"td3-eriksson",
         {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<<<10"}},
        {"td3-eriksson",
         {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<K<<<<<<SC<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"}},
        {"td1-d2-long",
         {"I<UTOD2314S890<7349<<<<<<<<<<<<<", "34O7127M9507122UTO<<<<<<<<<<<2", "STEVENSON<<PETER<JOHN<<<<<<<"}},
        {"td1-long-19",
         {"I<UTOD23145890<AB11223A566<<<<", "7408122F1204159UTO<<<<<<<<<<<6", "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"}},
        {"td2-d2-long", {"I<UTOSTEVENSON<<PETER<J0HN<<<<<<<<<<", "D231A5890<UTO3407127M95071227349<<<8"}}};
    for (const auto& [id, seen] : rows) {
        EXPECT_FALSE(parsedZone(seen)) << seen[0];
        const auto zone = repairedZone(seen);
        ASSERT_TRUE(zone) << seen[0] << '\n' << seen[1];
        EXPECT_EQ(zone->lines, specimen(id));
    }
}

TEST(Zone, GuessesNothing) {
    const std::vector<std::vector<std::string>> rows{
        // The check digit itself is wrong, and no exchange of letters that look alike explains it.
        specimen("td3-bad-date-of-birth"),
        specimen("td3-bad-date-of-expiry"),
        specimen("td1-d2-short"),
        // Two exchanges of one letter agree with the check digit.
        {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L89B902C36UTO7408122F1204159ZE184226B<<<<<10"},
        // A whole part is missing, or too many fillers to count.
        {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"},
        {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B"}};
    for (const auto& row : rows) {
        EXPECT_FALSE(repairedZone(row)) << row[0] << '\n' << row[1];
    }
}

} // namespace
} // namespace kivo::reader
