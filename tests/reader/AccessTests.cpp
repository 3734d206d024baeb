#include "access/BasicAccess.hpp"
#include "access/Pace.hpp"
#include "reader/ScriptedCard.hpp"
#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

#include <map>

namespace kivo::reader {
namespace {

using Lines = std::deque<ScriptedCard::Line>;
using nlohmann::json;

Lines basicAccessLines(const json& example) {
    return {{bytesOf(example["get_challenge_command"]), bytesOf(example["get_challenge_response"])},
            {bytesOf(example["external_authenticate_command"]), bytesOf(example["external_authenticate_response"])}};
}

std::expected<void, ChipFault> runBasicAccess(Channel& channel, const json& example) {
    return openByBasicAccess(channel, passwordOfZone("L898902C<369080619406236"),
                             scriptedRandomness({joined({bytesOf(example["rnd_ifd"]), bytesOf(example["k_ifd"])})}));
}

TEST(BasicAccess, GoesAlongWithThePublishedExample) {
    const auto example = vectors("bac")["d3_authentication"];
    ScriptedCard card{basicAccessLines(example)};
    auto channel = channelTo(card);
    ASSERT_TRUE(runBasicAccess(channel, example));
    ASSERT_TRUE(channel.keys());
    EXPECT_EQ(plain(channel.keys()->encryption), bytesOf(example["ks_enc"]));
    EXPECT_EQ(plain(channel.keys()->authentication), bytesOf(example["ks_mac"]));
    EXPECT_EQ(channel.keys()->counter, bytesOf(example["ssc"]));
}

TEST(BasicAccess, TellsWhyItFails) {
    const auto example = vectors("bac")["d3_authentication"];
    const auto good = basicAccessLines(example);
    auto forged = good[1].answer;
    forged[3] ^= 1;

    const struct {
        const char* what;
        Bytes challenge;
        Bytes answer;
        ChipFault fault;
    } rows[] = {
        {"wrong password", good[0].answer, {0x63, 0x00}, ChipFault::denied},
        {"password not accepted", good[0].answer, {0x69, 0x82}, ChipFault::denied},
        {"no such command", {0x6D, 0x00}, {}, ChipFault::unsupported},
        {"short challenge", {1, 2, 3, 4, 5, 6, 7, 0x90, 0x00}, {}, ChipFault::broken},
        {"no status", {0x90}, {}, ChipFault::broken},
        {"cut off", good[0].answer, {1, 2, 3, 0x90, 0x00}, ChipFault::broken},
        {"one bit changed", good[0].answer, forged, ChipFault::broken},
        {"own message sent back", good[0].answer, joined({bytesOf(example["cmd_data"]), done}), ChipFault::broken},
    };

    for (const auto& row : rows) {
        ScriptedCard card{{{good[0].command, row.challenge}, {good[1].command, row.answer}}};
        auto channel = channelTo(card);
        const auto opened = runBasicAccess(channel, example);
        ASSERT_FALSE(opened) << row.what;
        EXPECT_EQ(opened.error(), row.fault) << row.what;
        EXPECT_FALSE(channel.keys());
    }
}

// An example of PACE as a dialogue: the commands that it prints, or those that its values make up.
struct PaceExample {
    PaceInfo info{};
    Password password{};
    Lines lines{};
    std::deque<Bytes> random{};

    explicit PaceExample(const json& example) {
        const auto has = [&](const char* name) { return example.contains(name); };
        const auto protocol = example["protocol_oid"].get<std::string>();
        const auto arcs = Bytes{static_cast<std::uint8_t>(protocol[protocol.size() - 3] - '0'),
                                static_cast<std::uint8_t>(protocol.back() - '0')};
        const auto number = static_cast<std::uint8_t>(example["parameter_id"].get<int>());
        const auto pace = has("pace_info")
                              ? bytesOf(example["pace_info"])
                              : joined({{0x30, 0x12, 0x06, 0x0A, 0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02, 0x04},
                                        arcs,
                                        {0x02, 0x01, 0x02, 0x02, 0x01, number}});
        const auto infos =
            securityInfosIn(has("ef_cardaccess") ? bytesOf(example["ef_cardaccess"]) : encodedTlv(0x31, pace));
        info = *preferredPace(infos.value());
        password = passwordOfNumber(has("password") ? example["password"].get<std::string>() : "");
        if (has("mrz_information")) {
            password = passwordOfZone(example["mrz_information"].get<std::string>());
        }
        random = {has("nonce_t") ? bytesOf(example["nonce_t"]) : reduced(example, "map_sk_ifd"),
                  reduced(example, "dh_sk_ifd")};
        if (has("apdus")) {
            for (const auto& line : example["apdus"]) {
                lines.push_back({bytesOf(line["command"]), bytesOf(line["response"])});
            }
            return;
        }
        auto choice = encoded({.instruction = 0x22,
                               .parameter1 = 0xC1,
                               .parameter2 = 0xA4,
                               .data = joined({encodedTlv(0x80, info.protocol),
                                               {0x83, 0x01, static_cast<std::uint8_t>(password.kind)}})});
        lines.push_back({choice, done});
        add(0x10, {}, encodedTlv(0x80, bytesOf(example["nonce_z"])));
        add(0x10, encodedTlv(0x81, has("nonce_t") ? bytesOf(example["nonce_t"]) : bytesOf(example["map_pk_ifd"])),
            encodedTlv(0x82, has("nonce_t") ? Bytes{} : bytesOf(example["map_pk_ic"])));
        add(0x10, encodedTlv(0x83, bytesOf(example["dh_pk_ifd"])), encodedTlv(0x84, bytesOf(example["dh_pk_ic"])));
        add(0x00, encodedTlv(0x85, bytesOf(example["t_ifd"])), encodedTlv(0x86, bytesOf(example["t_ic"])));
    }

    void add(std::uint8_t classByte, const Bytes& object, const Bytes& answer) {
        lines.push_back(
            {encoded({.classByte = classByte, .instruction = 0x86, .data = encodedTlv(0x7C, object), .expected = 256}),
             joined({encodedTlv(0x7C, answer), done})});
    }

    std::expected<MappedChip, ChipFault> run(Channel& channel) const {
        return openByPace(channel, info, false, password, scriptedRandomness(random));
    }
};

TEST(Pace, GoesAlongWithThePublishedExamples) {
    std::map<std::pair<Mapping, bool>, int> kinds;
    const auto file = vectors("pace");
    for (const auto& example : file["examples"]) {
        const PaceExample pace{example};
        ScriptedCard card{pace.lines};
        auto channel = channelTo(card);
        const auto chip = pace.run(channel);
        ASSERT_TRUE(chip) << example["name"];
        EXPECT_EQ(card.linesLeft(), 0U);
        EXPECT_EQ(plain(channel.keys()->encryption), bytesOf(example["ks_enc"]));
        EXPECT_EQ(plain(channel.keys()->authentication), bytesOf(example["ks_mac"]));
        EXPECT_EQ(channel.keys()->counter, Bytes(16));
        ++kinds[{pace.info.mapping, pace.info.isElliptic}];

        EXPECT_EQ(chip->group != nullptr, pace.info.mapping == Mapping::chipAuthentication);
        if (chip->group) {
            const auto info = bytesOf(example["chip_authentication_mapping"]["chip_authentication_public_key_info"]);
            const auto keys = securityInfosIn(encodedTlv(0x31, info)).value().keys;
            EXPECT_TRUE(chip->hasSecretOf(staticKeyIn(keys.at(0).subjectPublicKeyInfo).value().publicKey));
            EXPECT_FALSE(chip->hasSecretOf(bytesOf(example["map_pk_ic"])));
        }
    }
    EXPECT_EQ(kinds.size(), 5U);
}

TEST(Pace, TellsWhyItFails) {
    const auto example = vectors("pace")["examples"][0];
    const PaceExample pace{example};
    auto offCurve = bytesOf(example["map_pk_ic"]);
    offCurve.back() ^= 1;
    auto compressed = bytesOf(example["map_pk_ic"]);
    compressed.resize(33);
    compressed[0] = 0x02;
    auto wrongToken = bytesOf(example["t_ic"]);
    wrongToken[0] ^= 1;
    const auto objects = [](std::uint32_t tag, const Bytes& value) {
        return joined({encodedTlv(0x7C, encodedTlv(tag, value)), done});
    };

    const struct {
        const char* what;
        std::size_t step;
        Bytes answer;
        ChipFault fault;
    } rows[] = {
        {"protocol unknown", 0, {0x6A, 0x80}, ChipFault::unsupported},
        {"no attempt is left", 0, {0x63, 0xC0}, ChipFault::denied},
        {"an error with the nonce", 1, {0x6F, 0x00}, ChipFault::broken},
        {"no nonce", 1, objects(0x81, {}), ChipFault::broken},
        {"half a nonce", 1, objects(0x80, Bytes(8)), ChipFault::broken},
        {"an endless nonce", 1, objects(0x80, Bytes(80)), ChipFault::broken},
        {"bytes behind the objects", 1, joined({encodedTlv(0x7C, encodedTlv(0x80, Bytes(16))), {0x00}, done}),
         ChipFault::broken},
        {"point off the curve", 2, objects(0x82, offCurve), ChipFault::broken},
        {"compressed point", 2, objects(0x82, compressed), ChipFault::broken},
        {"infinity", 2, objects(0x82, {0x00}), ChipFault::broken},
        {"own mapping key sent back", 2, objects(0x82, bytesOf(example["map_pk_ifd"])), ChipFault::broken},
        {"own key sent back", 3, objects(0x84, bytesOf(example["dh_pk_ifd"])), ChipFault::broken},
        {"wrong password", 4, {0x63, 0x00}, ChipFault::denied},
        {"wrong password, two attempts left", 4, {0x63, 0xC2}, ChipFault::denied},
        {"wrong token", 4, objects(0x86, wrongToken), ChipFault::broken},
        {"own token sent back", 4, objects(0x86, bytesOf(example["t_ifd"])), ChipFault::broken},
        {"short token", 4, objects(0x86, {}), ChipFault::broken},
    };

    for (const auto& row : rows) {
        auto lines = pace.lines;
        lines[row.step].answer = row.answer;
        ScriptedCard card{lines};
        auto channel = channelTo(card);
        const auto chip = pace.run(channel);
        ASSERT_FALSE(chip) << row.what;
        EXPECT_EQ(chip.error(), row.fault) << row.what;
        EXPECT_EQ(card.linesLeft(), 4 - row.step) << row.what;
        EXPECT_FALSE(channel.keys());
    }
}

TEST(Pace, RefusesNumbersOutsideOfTheGroup) {
    const auto group = KeyAgreement::standardised(0);
    const auto own = group->makeKeyPair(fillRandomly);
    const auto prime = bytesOf(vectors("pace")["examples"][1]["p"]);
    auto last = prime;
    last.back() -= 1;
    Bytes two(128);
    two.back() = 2; // generates more than the subgroup
    for (const auto& number : {Bytes{}, Bytes(128), Bytes{1}, prime, last, two, joined({{1}, prime}), own.publicKey}) {
        EXPECT_FALSE(group->agree(own, number)) << testing::PrintToString(number);
        EXPECT_FALSE(group->mappedGenerically(Bytes(16, 1), own, number));
    }
    EXPECT_TRUE(group->agree(own, group->makeKeyPair(fillRandomly).publicKey));
}

TEST(KeyAgreement, IsTheSameOnBothSidesInEveryStandardisedGroup) {
    for (int parameter = 0; parameter < 32; ++parameter) {
        const auto group = KeyAgreement::standardised(parameter);
        ASSERT_EQ(group != nullptr, parameter <= 2 || (parameter >= 8 && parameter <= 18)) << parameter;
        if (!group) {
            continue;
        }
        const auto one = group->makeKeyPair(fillRandomly);
        const auto other = group->makeKeyPair(fillRandomly);
        const auto mapped = group->mappedGenerically(Bytes(16, 7), one, other.publicKey);
        const auto same = group->mappedGenerically(Bytes(16, 7), other, one.publicKey);
        ASSERT_TRUE(mapped && same);
        EXPECT_EQ(mapped->generator(), same->generator());
        const auto first = mapped->makeKeyPair(fillRandomly);
        const auto second = same->makeKeyPair(fillRandomly);
        EXPECT_EQ(mapped->agree(first, second.publicKey), same->agree(second, first.publicKey)) << parameter;
        // The map into the curve is made for primes that leave 3 when divided by 4.
        constexpr int nistP224 = 10;
        EXPECT_EQ(group->mappedIntegrated(Bytes(80, 9)) != nullptr, parameter != nistP224) << parameter;
    }
}

} // namespace
} // namespace kivo::reader
