#include "support/Chip.hpp"

#include <kivo/simulator/Passport.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using test::answerTo;
using test::fromHex;
using test::hex;
using test::selectApplication;

// READ BINARY of EF.CardAccess by its short identifier, which no key protects.
const std::string readCardAccess = "00b09c0000";

TEST(PassportFaults, MeetTheAnswersOfTheChip) {
    Passport passport;
    const auto sound = answerTo(passport, readCardAccess);
    ASSERT_EQ(sound, hex(passport.file("CardAccess")) + "9000");

    passport.setFault(ChipFault::garbage());
    const auto garbage = answerTo(passport, readCardAccess);
    EXPECT_NE(garbage, sound);
    EXPECT_EQ(garbage.size(), sound.size());
    EXPECT_EQ(answerTo(passport, selectApplication), "9000") << "only reading is spoilt";

    passport.setFault(ChipFault::shortAnswers());
    EXPECT_EQ(answerTo(passport, readCardAccess), sound.substr(0, sound.size() / 4 * 2));

    passport.setFault(ChipFault::slow(30ms));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(answerTo(passport, readCardAccess), sound);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 30ms);

    passport.setFault(std::nullopt);
    EXPECT_EQ(answerTo(passport, readCardAccess), sound);
}

TEST(PassportFaults, TakeTheChipAwayAtAByteAndLeaveItAwayUntilItIsLaidDown) {
    PassportConfiguration configuration;
    configuration.fault = ChipFault::takenAway(30);
    Passport passport{configuration};
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(passport.transmit(fromHex(readCardAccess)).size(), 24U);
        EXPECT_EQ(answerTo(passport, readCardAccess), "") << "the second answer ends behind the 30th byte";
        EXPECT_FALSE(passport.isOnReader());
        EXPECT_EQ(answerTo(passport, selectApplication), "");
        passport.layDown();
    }
}

TEST(PassportFaults, LeaveACallWaitingUntilTheChipIsGone) {
    PassportConfiguration configuration;
    configuration.fault = ChipFault::silent();
    const auto end = [&](const std::function<void(std::unique_ptr<Passport>&, std::stop_source&)>& finish) {
        auto passport = std::make_unique<Passport>(configuration);
        std::stop_source stop;
        Bytes answer{1};
        std::thread reader{
            [&, chip = passport.get()] { answer = chip->transmit(fromHex(readCardAccess), stop.get_token()); }};
        std::this_thread::sleep_for(5ms); // most often the call waits by then; the answer is the same where not
        finish(passport, stop);
        reader.join();
        return hex(answer);
    };
    EXPECT_EQ(end([](auto& passport, auto&) { passport->takeAway(); }), "");
    EXPECT_EQ(end([](auto&, auto& stop) { stop.request_stop(); }), "");
}

TEST(PassportFaults, HaveNamesAndTexts) {
    for (const auto& named : namedChipFaults()) {
        EXPECT_EQ(chipFaultFromText(named.name), named.fault) << named.name;
    }
    EXPECT_EQ(chipFaultFromText("taken-away:17"), ChipFault::takenAway(17));
    EXPECT_EQ(chipFaultFromText("slow:2s"), ChipFault::slow(2s));
    for (const auto* wrong : {"", "taken", "taken-away:", "taken-away:-1", "slow:2", "slow:11000s", "garbage:1"}) {
        const auto fault = chipFaultFromText(wrong);
        ASSERT_FALSE(fault) << wrong;
        EXPECT_THAT(fault.error(), testing::StartsWith("takes a fault of the chip")) << wrong;
    }
}

TEST(Passport, RefusesWhatNoTerminalSends) {
    const struct {
        const char* what;
        std::string command;
        std::string answer;
    } rows[] = {
        {"nothing", "", "6700"},
        {"half a header", "00a404", "6700"},
        {"half an identifier", "00a40000013f", "6700"},
        {"more data than announced", "00a4040c0102ff00", "6700"},
        {"less data than announced", "00a4040c07a00000", "6700"},
        {"a long command without a length", "00a4040c0000", "6700"},
        {"a long command that is cut off", "00a4040c000007a000", "6700"},
        {"a class of another kind", "80a4040c07a0000002471001", "6e00"},
        {"an unknown instruction", "00fe0000", "6d00"},
        {"a command that is too long", "00a4040c00" + hex({0x20, 0x00}) + std::string(2 * 0x2000, '0'), "6700"},
        {"another application", "00a4040c07a0000002471002", "6a82"},
        {"a file that is not there", "00a4020c02011e", "6a82"},
        {"a selection by path", "00a4080c02011c", "6a86"},
        {"reading without a file", "00b0000000", "6985"},
        {"reading behind the end", "00b09cff00", "6b00"},
        {"reading of nothing", "00b09c00", "6700"},
        {"a file behind a key", "00b09d0000", "6982"},
        {"odd reading without an offset", "00b1011c00", "6a80"},
        {"a challenge outside of the application", "0084000008", "6985"},
        {"an answer to no challenge", "0082000028" + std::string(80, '0') + "28", "6985"},
        {"a secured command without a channel", "0cb000000d9701048e08ed6705417e96ba5500", "6985"},
        {"PACE of an unknown form", "0022c1a40f800a04007f00070202040199830101", "6a80"},
        {"PACE with a PIN", "0022c1a40f800a04007f00070202040202830103", "6a88"},
        {"PACE without objects", "0022c1a402ffff", "6a80"},
        {"a step of no run", "10860000027c0000", "9000"},
        {"a proof before access", "0088000008010203040506070800", "6985"},
    };

    for (const auto& row : rows) {
        Passport passport;
        EXPECT_EQ(answerTo(passport, row.command), row.answer) << row.what;
    }
}

TEST(Passport, EndsARunOfPaceAtTheFirstWrongStep) {
    const std::string begin = "0022c1a40f800a04007f00070202040202830101";
    const std::string nonce = "10860000027c0000";
    const auto step = [](const std::string& tag, const std::string& value) {
        return "10860000" + test::lengthed(test::object("7c", test::object(tag, value))) + "00";
    };
    const std::string generator = "048bd2aeb9cb7e57cb2c4b482ffc81b7afb9de27e1e3bd23c23a4453bd9ace3262"
                                  "547ef835c3dac4fd97f8461a14611dc9c27745132ded8e545c1d54c72f046997";

    const struct {
        const char* what;
        std::vector<std::string> steps;
        const char* end;
    } rows[] = {
        {"a point that is not on the curve", {step("81", "04" + std::string(128, '1'))}, "6a80"},
        {"the neutral point", {step("81", "00")}, "6a80"},
        {"a compressed point", {step("81", "03" + generator.substr(2, 64))}, "6a80"},
        {"no point", {step("81", "")}, "6a80"},
        {"the wrong object", {step("83", generator)}, "6a80"},
        {"a wrong token", {step("81", generator), step("83", generator), step("85", "0102030405060708")}, "6300"},
        {"a short token", {step("81", generator), step("83", generator), step("85", "")}, "6300"},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        Passport passport;
        ASSERT_EQ(answerTo(passport, begin), "9000");
        ASSERT_THAT(answerTo(passport, nonce), testing::EndsWith("9000"));
        for (const auto& each : row.steps) {
            const auto answer = answerTo(passport, each);
            EXPECT_THAT(answer, testing::EndsWith(&each == &row.steps.back() ? row.end : "9000"));
        }
        EXPECT_EQ(answerTo(passport, "00860000" + test::lengthed("7c00") + "00"), "6985") << "the run is over";
    }
}

TEST(Passport, BoundsAChainAndKeepsItTogether) {
    Passport passport;
    const auto part = "1022c1a4ff" + std::string(510, '0');
    EXPECT_EQ(answerTo(passport, part), "9000");
    EXPECT_EQ(answerTo(passport, "0022c1a601ff"), "6883") << "another command in the chain";
    std::string answer;
    for (int each = 0; each < 20 && answer != "6700"; ++each) {
        answer = answerTo(passport, part);
    }
    EXPECT_EQ(answer, "6700");
}

TEST(Passport, TakesLongCommandsWhereItSaysSo) {
    for (const bool extended : {true, false}) {
        PassportConfiguration configuration;
        configuration.extendedLength = extended;
        Passport passport{configuration};
        EXPECT_EQ(answerTo(passport, "00b09c00000000"), extended ? hex(passport.file("CardAccess")) + "9000" : "6700");
        // The last but one byte of the answer to reset tells the same.
        const auto atr = passport.answerToReset();
        EXPECT_EQ((atr[atr.size() - 2] & 0x40) != 0, extended);
    }
}

} // namespace
} // namespace kivo::simulator
