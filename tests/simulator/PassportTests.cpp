#include "support/Chip.hpp"

#include <kivo/simulator/Passport.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <map>
#include <stdexcept>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using Json = nlohmann::json;
using test::answerTo;
using test::fromHex;
using test::hex;
using test::selectApplication;

Json vectors(const std::string& name) {
    return Json::parse(std::ifstream{std::string{KIVO_TEST_DATA} + "/reader/" + name});
}

std::string text(const Json& example, const char* member) {
    return example.at(member).get<std::string>();
}

/// A random source that gives these numbers, one after the other.
std::function<void(std::span<std::uint8_t>)> numbers(const std::string& inHex) {
    auto left = std::make_shared<Bytes>(fromHex(inHex));
    return [left](std::span<std::uint8_t> bytes) {
        if (left->size() < bytes.size()) {
            throw std::runtime_error{"the chip asks for more random bytes than there are"};
        }
        std::copy_n(left->begin(), bytes.size(), bytes.begin());
        left->erase(left->begin(), left->begin() + static_cast<std::ptrdiff_t>(bytes.size()));
    };
}

/// A chip without anything that draws numbers of its own.
PassportConfiguration bare() {
    return {.furtherGroups = false, .pace = {}, .chipAuthentication = std::nullopt};
}

TEST(Passport, OpensAndReadsAsTheWorkedExampleOfBasicAccess) {
    const auto bac = vectors("bac.json");
    const auto& access = bac.at("d3_authentication");
    auto configuration = bare();
    configuration.format = DocumentFormat::td2;
    configuration.zone = bac.at("d2_access_keys").at(1).at("mrz").get<std::vector<std::string>>();
    configuration.random = numbers(text(access, "rnd_ic") + text(access, "k_ic"));
    Passport passport{configuration};

    EXPECT_EQ(answerTo(passport, selectApplication), "9000");
    EXPECT_EQ(answerTo(passport, text(access, "get_challenge_command")), text(access, "get_challenge_response"));
    EXPECT_EQ(answerTo(passport, text(access, "external_authenticate_command")),
              text(access, "external_authenticate_response"));
    for (const auto& step : bac.at("d4_secure_messaging").at("steps")) {
        EXPECT_EQ(answerTo(passport, text(step, "protected_command")), text(step, "protected_response"))
            << text(step, "name");
    }
}

/// The private numbers of a worked example, in the order in which a chip draws them.
std::string drawn(const Json& example) {
    std::string all;
    if (example.contains("chip_authentication_mapping")) {
        all = text(example.at("chip_authentication_mapping"), "sk_ic_static_derived");
    }
    all += text(example, "nonce_s") + example.value("map_sk_ic", "");
    // Two examples have a number above the group's order, where a chip draws the number below.
    const std::map<std::string, std::string> below{
        {"020f018c", "a5b780126b7c980e9fcea1d4539da1d27c342dfa"},
        {"cd626ef3", "2367171820683879c023083a24feec7499c71436b5d85ecd3f681bb9436f47d1"},
    };
    const auto last = text(example, "dh_sk_ic");
    const auto found = below.find(last.substr(0, 8));
    return all + (found == below.end() ? last : found->second);
}

PaceOffer offerOf(const Json& example) {
    const auto name = text(example, "name");
    const auto mapping = name.contains("integrated")  ? PaceMapping::integrated
                         : name.contains("chip auth") ? PaceMapping::chipAuthentication
                                                      : PaceMapping::generic;
    return {.mapping = mapping, .domainParameters = example.at("parameter_id").get<int>()};
}

/// The zone of a TD2 document with these values, each with its check digit.
std::vector<std::string> zoneWith(const std::string& number, const std::string& birth, const std::string& expiry) {
    return {"I<UTODOE<<JANE<<<<<<<<<<<<<<<<<<<<<<", number + "UTO" + birth + "F" + expiry + "<<<<<<<0"};
}

TEST(Passport, AnswersAsTheWorkedExamplesOfPace) {
    const auto examples = vectors("pace.json").at("examples");
    int compared = 0;
    for (const auto& example : examples) {
        SCOPED_TRACE(text(example, "name"));
        if (text(example, "password_type") == "PIN") {
            continue; // a travel document has no PIN
        }
        auto configuration = bare();
        configuration.format = DocumentFormat::td2;
        configuration.pace = {offerOf(example)};
        configuration.cardAccessNumber = "123456";
        configuration.random = numbers(drawn(example));
        const bool byZone = text(example, "password_type") == "MRZ";
        if (byZone) {
            configuration.zone = zoneWith(text(example, "document_number_with_check_digit"),
                                          text(example, "date_of_birth_with_check_digit"),
                                          text(example, "date_of_expiry_with_check_digit"));
        }
        Passport passport{configuration};
        if (example.contains("ef_cardaccess_built")) {
            EXPECT_EQ(hex(passport.file("CardAccess")), text(example, "ef_cardaccess_built"));
        }

        // The identifier is the first object of what the tokens cover.
        const auto covered = text(example, "input_t_ifd");
        const auto protocol = covered.substr(covered.find("060a") + 4, 20);
        const auto send = [&](const std::string& tag, const std::string& value, bool isLast = false) {
            const auto inner = test::object(tag, value);
            const auto data = test::object("7c", inner);
            return answerTo(passport, (isLast ? "0086" : "1086") + std::string{"0000"} + test::lengthed(data) + "00");
        };
        const auto answered = [](const std::string& tag, const std::string& value) {
            return test::object("7c", test::object(tag, value)) + "9000";
        };
        EXPECT_EQ(answerTo(passport, "0022c1a4" + test::lengthed(test::object("80", protocol) +
                                                                 test::object("83", byZone ? "01" : "02"))),
                  "9000");
        EXPECT_EQ(answerTo(passport, "10860000027c0000"), answered("80", text(example, "nonce_z")));
        const bool isIntegrated = example.contains("nonce_t");
        EXPECT_EQ(send("81", text(example, isIntegrated ? "nonce_t" : "map_pk_ifd")),
                  isIntegrated ? answered("82", "") : answered("82", text(example, "map_pk_ic")));
        EXPECT_EQ(send("83", text(example, "dh_pk_ifd")), answered("84", text(example, "dh_pk_ic")));
        const auto proof = example.contains("chip_authentication_mapping")
                               ? test::object("8a", text(example.at("chip_authentication_mapping"),
                                                         "encrypted_chip_authentication_data"))
                               : "";
        EXPECT_EQ(send("85", text(example, "t_ifd"), true),
                  test::object("7c", test::object("86", text(example, "t_ic")) + proof) + "9000");
        ++compared;
    }
    EXPECT_EQ(compared, 5);
}

/// A chip that has just been opened as in the worked example, whose counter is known.
struct OpenedChip {
    explicit OpenedChip(std::optional<ChipFault> fault = std::nullopt) {
        const auto& access = bac.at("d3_authentication");
        auto configuration = bare();
        configuration.format = DocumentFormat::td2;
        configuration.zone = bac.at("d2_access_keys").at(1).at("mrz").get<std::vector<std::string>>();
        configuration.random = numbers(text(access, "rnd_ic") + text(access, "k_ic"));
        configuration.fault = fault;
        passport = std::make_unique<Passport>(configuration);
        for (const auto& command : {selectApplication, text(access, "get_challenge_command"),
                                    text(access, "external_authenticate_command")}) {
            EXPECT_THAT(answerTo(*passport, command), testing::EndsWith("9000"));
        }
    }

    /// A command of the example: 0 selects EF.COM, 1 and 2 read.
    std::string command(std::size_t step) const {
        return text(bac.at("d4_secure_messaging").at("steps").at(step), "protected_command");
    }

    Json bac = vectors("bac.json");
    std::unique_ptr<Passport> passport;
};

TEST(Passport, EndsAChannelAtTheFirstCommandThatIsNotTheTerminals) {
    const std::string select = OpenedChip{}.command(0);
    const auto changed = [&](std::size_t place, const char* digits) {
        auto command = select;
        return command.replace(place, 2, digits);
    };

    const struct {
        const char* what;
        std::string command;
        const char* answer;
    } rows[] = {
        {"another file", changed(18, "00"), "6988"},
        {"another code", changed(46, "00"), "6988"},
        {"another instruction", changed(2, "b0"), "6988"},
        {"no code", "0ca4020c0b8709016375432908c044f600", "6987"},
        {"no objects", "0ca4020c03ffffff00", "6987"},
        {"bytes behind the code", "0ca4020c178709016375432908c044f68e08bf8b92d635ff24f8990000", "6988"},
        {"the command for later", OpenedChip{}.command(1), "6988"},
        {"a plain command", "00b09e0004", "6982"},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const OpenedChip chip;
        EXPECT_EQ(answerTo(*chip.passport, row.command), row.answer);
        EXPECT_EQ(answerTo(*chip.passport, select), "6985") << "the channel is closed";
    }
    const OpenedChip chip;
    EXPECT_THAT(answerTo(*chip.passport, select), testing::EndsWith("9000"));
    EXPECT_EQ(answerTo(*chip.passport, select), "6988") << "a command twice";
}

TEST(Passport, RepeatsAnAnswerAsAFault) {
    const OpenedChip chip{ChipFault::replay()};
    answerTo(*chip.passport, chip.command(0));
    const auto first = answerTo(*chip.passport, chip.command(1));
    EXPECT_EQ(answerTo(*chip.passport, chip.command(2)), first);
}

} // namespace
} // namespace kivo::simulator
