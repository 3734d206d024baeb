#include "access/ChipAuthentication.hpp"

#include "access/Pace.hpp"
#include "reader/ScriptedCard.hpp"
#include "reader/Vectors.hpp"
#include "tlv/Tlv.hpp"

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

using nlohmann::json;

// DG14's set with a key of a standardised group, for these ciphers.
SecurityInfos chipInfos(const json& example, std::initializer_list<std::uint8_t> ciphers) {
    const bool isElliptic = example["parameter_id"] == 13;
    const auto kind = static_cast<std::uint8_t>(isElliptic ? 2 : 1);
    const auto protocol = [&](std::uint8_t room) {
        return Bytes{0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02, room, kind};
    };
    const auto number = static_cast<std::uint8_t>(example["parameter_id"].get<int>());
    auto key = bytesOf(example["pk_ic"]);
    if (!isElliptic) {
        key = encodedTlv(0x02, key);
    }
    const auto algorithm = encodedTlv(
        0x30, joined({encodedTlv(0x06, Bytes{0x04, 0x00, 0x7F, 0x00, 0x07, 0x01, 0x02}), {0x02, 0x01, number}}));
    const auto keyInfo = encodedTlv(0x30, joined({algorithm, encodedTlv(0x03, joined({{0x00}, key}))}));
    auto infos = encodedTlv(0x30, joined({encodedTlv(0x06, protocol(1)), keyInfo}));
    for (const auto cipher : ciphers) {
        infos = joined(
            {infos, encodedTlv(0x30, joined({encodedTlv(0x06, joined({protocol(3), {cipher}})), {0x02, 0x01, 0x01}}))});
    }
    return securityInfosIn(encodedTlv(0x31, infos)).value();
}

TEST(ChipAuthentication, GoesAlongWithThePublishedExamples) {
    const struct {
        Cipher cipher;
        std::initializer_list<std::uint8_t> offered;
        const char* encryption;
        const char* authentication;
    } rows[] = {
        {Cipher::aes128, {1, 2}, "ks_enc_aes128", "ks_mac_aes128"},
        {Cipher::aes256, {2, 4, 3}, "ks_enc_aes256", "ks_mac_aes256"},
        {Cipher::tripleDes, {1}, "ks_enc_3des", "ks_mac_3des"},
        {Cipher::tripleDes, {}, "ks_enc_3des", "ks_mac_3des"},
    };

    const auto file = vectors("chip-authentication");
    for (const auto& example : file["examples"]) {
        for (const auto& row : rows) {
            const auto& form = example["doc9303_form_computed_here"];
            Bytes lastCommand;
            std::vector<Bytes> commands;
            PlayedCard card{[&](ByteView command) -> std::expected<Bytes, CardError> {
                commands.emplace_back(command.begin(), command.end());
                if ((command[0] & 0x0C) == 0) {
                    return command[1] == 0x86 ? Bytes{0x7C, 0x00, 0x90, 0x00} : done;
                }
                // The chip's answer under the published keys.
                Bytes counter(blockSize(row.cipher));
                counter.back() = 2;
                const auto message = joined({counter, {0x99, 0x02, 0x90, 0x00}});
                const auto code = authenticationCode(
                    row.cipher, bytesOf(form[row.authentication]),
                    row.cipher == Cipher::tripleDes ? Secret{message.begin(), message.end()} : padded(message, 16));
                return joined({{0x99, 0x02, 0x90, 0x00, 0x8E, 0x08}, code, done});
            }};
            auto channel = channelTo(card);
            const auto proof = authenticateChip(channel, chipInfos(example, row.offered),
                                                scriptedRandomness({reduced(example, "sk_ifd")}));
            ASSERT_TRUE(proof);
            EXPECT_EQ(*proof, ChipProof::proven) << example["name"] << row.encryption;
            EXPECT_EQ(plain(channel.keys()->encryption), bytesOf(form[row.encryption]));
            if (row.cipher == Cipher::aes128) {
                EXPECT_EQ(commands.at(0), bytesOf(form["apdus_aes_plain"][0]["command"]));
                EXPECT_EQ(commands.at(1), bytesOf(form["apdus_aes_plain"][1]["command"]));
            }
        }
    }
}

TEST(ChipAuthentication, RefutesAChipWithoutTheSecret) {
    const auto example = vectors("chip-authentication")["examples"][0];
    const auto infos = chipInfos(example, {2});

    const struct {
        Bytes toChoice;
        Bytes toKey;
        Bytes toProof;
    } rows[] = {{{0x6A, 0x80}, {}, {}},
                {done, {0x69, 0x82}, {}},
                {done, {0x7C, 0x00, 0x90, 0x00}, {0x69, 0x88}},
                {done, {0x7C, 0x00, 0x90, 0x00}, joined({{0x99, 0x02, 0x90, 0x00, 0x8E, 0x08}, Bytes(8), done})}};

    for (const auto& row : rows) {
        int step = 0;
        PlayedCard card{[&](ByteView) -> std::expected<Bytes, CardError> {
            ++step;
            return step == 1 ? row.toChoice : step == 2 ? row.toKey : row.toProof;
        }};
        auto channel = channelTo(card);
        EXPECT_EQ(authenticateChip(channel, infos), ChipProof::refuted);
    }
    PlayedCard taken{[](ByteView) { return std::unexpected{CardError::gone}; }};
    auto channel = channelTo(taken);
    EXPECT_EQ(authenticateChip(channel, infos).error(), ChipFault::gone);
    EXPECT_EQ(authenticateChip(channel, SecurityInfos{}), ChipProof::notOffered);
}

TEST(SecurityInfos, TakesWhatIsKnownAndLeavesTheRest) {
    const auto sample = vectors("chip-authentication")["dg14_sample"];
    const auto dg14 = bytesOf(sample["dg14"]);
    const auto infos = securityInfosIn(valueOf(dg14, 0x6E).value());
    ASSERT_TRUE(infos);
    ASSERT_EQ(infos->keys.size(), 1U);
    ASSERT_EQ(infos->chipAuthentication.size(), 1U);
    EXPECT_EQ(infos->chipAuthentication[0].cipher, Cipher::tripleDes);
    const auto key = staticKeyIn(infos->keys[0].subjectPublicKeyInfo);
    ASSERT_TRUE(key);
    EXPECT_EQ(key->publicKey, bytesOf(sample["chip_authentication_public_key"]));
    EXPECT_EQ(key->group->generator(), KeyAgreement::standardised(11)->generator());

    const auto pace = [](std::uint8_t mapping, std::uint8_t cipher, std::uint8_t parameter) {
        return Bytes{0x30, 0x12, 0x06,    0x0A,   0x04, 0x00, 0x7F, 0x00, 0x07, 0x02,
                     0x02, 0x04, mapping, cipher, 0x02, 0x01, 0x02, 0x02, 0x01, parameter};
    };

    const struct {
        Bytes set;
        bool isRead;
        std::size_t offered;
        std::optional<Mapping> preferred;
    } rows[] = {
        {encodedTlv(0x31, joined({pace(2, 2, 13), pace(6, 2, 13), pace(4, 4, 13)})), true, 3,
         Mapping::chipAuthentication},
        {encodedTlv(0x31, joined({pace(1, 4, 2), pace(4, 1, 12)})), true, 2, Mapping::integrated},
        {encodedTlv(0x31, joined({pace(2, 2, 0), pace(1, 2, 13), pace(2, 2, 32)})), true, 3, std::nullopt},
        {encodedTlv(0x31, joined({pace(5, 2, 13), pace(6, 1, 13), pace(2, 5, 13), pace(9, 1, 13)})), true, 0,
         std::nullopt},
        {encodedTlv(0x31, {}), true, 0, std::nullopt},
        {encodedTlv(0x30, pace(2, 2, 13)), false, 0, std::nullopt},
        {{0x31, 0x05, 0x30, 0x12, 0x06}, false, 0, std::nullopt},
        {encodedTlv(0x31, Bytes{0x30, 0x03, 0x06, 0x0A, 0x04}), false, 0, std::nullopt},
        {{}, false, 0, std::nullopt},
    };

    for (const auto& row : rows) {
        const auto found = securityInfosIn(row.set);
        ASSERT_EQ(found.has_value(), row.isRead) << testing::PrintToString(row.set);
        if (found) {
            EXPECT_EQ(found->pace.size(), row.offered);
            const auto* const preferred = preferredPace(*found);
            EXPECT_EQ(preferred == nullptr ? std::nullopt : std::optional{preferred->mapping}, row.preferred);
        }
    }
}

} // namespace
} // namespace kivo::reader
