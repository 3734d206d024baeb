// The access protocols against an implementation that shares no code with them, which plays the chip.
#include "access/ChipAuthentication.hpp"
#include "access/Pace.hpp"
#include "reader/ScriptedCard.hpp"
#include "tlv/Tlv.hpp"

#include <eac/ca.h>
#include <eac/eac.h>
#include <eac/objects.h>
#include <eac/pace.h>
#include <gtest/gtest.h>
#include <openssl/buffer.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>

namespace kivo::reader {
namespace {

using Context = std::unique_ptr<EAC_CTX, decltype(&EAC_CTX_clear_free)>;
using Buffer = std::unique_ptr<BUF_MEM, decltype(&BUF_MEM_free)>;

const Bytes done{0x90, 0x00};
constexpr const char* number = "500540";

Buffer bufferOf(ByteView bytes) {
    Buffer buffer{BUF_MEM_new(), &BUF_MEM_free};
    BUF_MEM_grow(buffer.get(), bytes.size());
    std::ranges::copy(bytes, reinterpret_cast<std::uint8_t*>(buffer->data));
    return buffer;
}

Bytes bytesIn(const BUF_MEM* buffer) {
    if (buffer == nullptr) {
        return {};
    }
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(buffer->data);
    return {begin, begin + buffer->length};
}

Bytes taken(BUF_MEM* buffer) {
    return bytesIn(Buffer{buffer, &BUF_MEM_free}.get());
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const auto& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// What a channel's first answer is: a status, authenticated by the chip with the keys of the context.
Bytes protectedStatus(EAC_CTX* context, std::size_t block) {
    EXPECT_EQ(EAC_increment_ssc(context), 1);
    EXPECT_EQ(EAC_increment_ssc(context), 1);
    const Bytes status{0x99, 0x02, 0x90, 0x00};
    const auto blocks = padded(status, block);
    const auto code = taken(EAC_authenticate(context, bufferOf(blocks).get()));
    return joined({status, encodedTlv(0x8E, code), done});
}

class PaceChip {
public:
    PaceChip(int protocol, int parameter) {
        EXPECT_EQ(EAC_CTX_init_pace(context_.get(), protocol, parameter), 1);
        context_->tr_version = EAC_TR_VERSION_2_02;
    }

    std::expected<Bytes, CardError> answer(ByteView command) {
        if (command[1] == 0x22) {
            return done;
        }
        if ((command[0] & 0x0C) != 0) {
            return protectedStatus(context_.get(), block_);
        }
        const auto objects = firstTlv(command.subspan(command[4] == 0 && command.size() > 7 ? 7 : 5));
        EXPECT_TRUE(objects && objects->tag == 0x7C);
        const auto object = firstTlv(objects->value);
        return object ? answerTo(object->tag, object->value)
                      : answerWith(0x80, taken(PACE_STEP1_enc_nonce(context_.get(), secret_.get())));
    }

    EAC_CTX* context() { return context_.get(); }

    void setBlock(std::size_t block) { block_ = block; }

private:
    Bytes answerWith(std::uint32_t tag, const Bytes& value) {
        EXPECT_TRUE(tag == 0x82 || !value.empty()) << tag;
        return joined({encodedTlv(0x7C, encodedTlv(tag, value)), done});
    }

    Bytes answerTo(std::uint32_t tag, ByteView value) {
        const auto buffer = bufferOf(value);
        switch (tag) {
        case 0x81: {
            const auto own = taken(PACE_STEP3A_generate_mapping_data(context_.get()));
            EXPECT_EQ(PACE_STEP3A_map_generator(context_.get(), buffer.get()), 1);
            return answerWith(0x82, own);
        }
        case 0x83: {
            const auto own = taken(PACE_STEP3B_generate_ephemeral_key(context_.get()));
            EXPECT_EQ(PACE_STEP3B_compute_shared_secret(context_.get(), buffer.get()), 1);
            EXPECT_EQ(PACE_STEP3C_derive_keys(context_.get()), 1);
            theirs_.assign(value.begin(), value.end());
            return answerWith(0x84, own);
        }
        case 0x85: {
            const auto token = taken(PACE_STEP3D_compute_authentication_token(context_.get(), bufferOf(theirs_).get()));
            if (PACE_STEP3D_verify_authentication_token(context_.get(), buffer.get()) != 1) {
                return {0x63, 0x00};
            }
            EXPECT_EQ(EAC_CTX_set_encryption_ctx(context_.get(), EAC_ID_PACE), 1);
            return answerWith(0x86, token);
        }
        default:
            ADD_FAILURE() << tag;
            return {};
        }
    }

    Context context_{EAC_CTX_new(), &EAC_CTX_clear_free};
    std::unique_ptr<PACE_SEC, decltype(&PACE_SEC_clear_free)> secret_{PACE_SEC_new(number, 6, PACE_CAN),
                                                                      &PACE_SEC_clear_free};
    Bytes theirs_{};
    std::size_t block_ = 16;
};

struct Offer {
    std::uint8_t mapping;
    std::uint8_t cipher;
    std::uint8_t parameter;
};

PaceInfo infoOf(const Offer& offer) {
    const auto info = encodedTlv(0x30, Bytes{0x06, 0x0A, 0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02, 0x04, offer.mapping,
                                             offer.cipher, 0x02, 0x01, 0x02, 0x02, 0x01, offer.parameter});
    return securityInfosIn(encodedTlv(0x31, info)).value().pace.at(0);
}

int protocolOf(const Offer& offer) {
    const int ciphers[2][4] = {{NID_id_PACE_DH_GM_3DES_CBC_CBC, NID_id_PACE_DH_GM_AES_CBC_CMAC_128,
                                NID_id_PACE_DH_GM_AES_CBC_CMAC_192, NID_id_PACE_DH_GM_AES_CBC_CMAC_256},
                               {NID_id_PACE_ECDH_GM_3DES_CBC_CBC, NID_id_PACE_ECDH_GM_AES_CBC_CMAC_128,
                                NID_id_PACE_ECDH_GM_AES_CBC_CMAC_192, NID_id_PACE_ECDH_GM_AES_CBC_CMAC_256}};
    return ciphers[offer.mapping - 1][offer.cipher - 1];
}

// The counterpart leaves the parity bits of keys for triple DES as they are. No cipher reads those bits.
Bytes withoutParity(ByteView key) {
    Bytes bits;
    for (const auto byte : key) {
        bits.push_back(key.size() == 16 ? byte & 0xFE : byte);
    }
    return bits;
}

// Whether the counterpart was of use: it leaves the zeros out with which a secret number begins now and then.
bool opensWith(const Offer& offer) {
    PaceChip chip{protocolOf(offer), offer.parameter};
    chip.setBlock(offer.cipher == 1 ? 8 : 16);
    PlayedCard card{[&](ByteView command) { return chip.answer(command); }};
    auto channel = channelTo(card);
    channel.capabilities() = {.takesLongMessages = true};
    const auto opened = openByPace(channel, infoOf(offer), false, passwordOfNumber(number));
    const auto* const keys = chip.context()->pace_ctx->ka_ctx;
    if (KeyAgreement::standardised(offer.parameter)->primeBits() > 8 * keys->shared_secret->length) {
        return false;
    }
    EXPECT_TRUE(opened) << int{offer.mapping} << '.' << int{offer.cipher} << " with " << int{offer.parameter};
    if (opened) {
        EXPECT_EQ(withoutParity(channel.keys()->encryption), withoutParity(bytesIn(keys->k_enc)));
        EXPECT_EQ(withoutParity(channel.keys()->authentication), withoutParity(bytesIn(keys->k_mac)));
        EXPECT_EQ(channel.send({.instruction = 0xA4, .data = {0x01, 0x1E}})->status, 0x9000);
    }
    return true;
}

TEST(Counterpart, OpensWithPace) {
    EAC_init();
    for (const auto mapping : Bytes{1, 2}) {
        for (const auto cipher : Bytes{1, 2, 3, 4}) {
            for (const auto parameter : Bytes{0, 1, 2, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}) {
                const Offer offer{.mapping = mapping, .cipher = cipher, .parameter = parameter};
                const bool isElliptic = parameter >= 8;
                if (isElliptic != (mapping == 2)) {
                    continue;
                }
                while (!opensWith(offer)) {
                }
            }
        }
    }
}

TEST(Counterpart, RefusesAnotherPassword) {
    EAC_init();
    PaceChip chip{NID_id_PACE_ECDH_GM_AES_CBC_CMAC_128, 13};
    PlayedCard card{[&](ByteView command) { return chip.answer(command); }};
    auto channel = channelTo(card);
    EXPECT_EQ(openByPace(channel, infoOf({2, 2, 13}), false, passwordOfNumber("500541")).error(), ChipFault::denied);
}

TEST(Counterpart, AuthenticatesTheChip) {
    EAC_init();

    const struct {
        int protocol;
        std::uint8_t kind;
        std::uint8_t cipher;
        std::uint8_t parameter;
    } rows[] = {
        {NID_id_CA_DH_3DES_CBC_CBC, 1, 1, 0},        {NID_id_CA_DH_AES_CBC_CMAC_128, 1, 2, 1},
        {NID_id_CA_DH_AES_CBC_CMAC_256, 1, 4, 2},    {NID_id_CA_ECDH_3DES_CBC_CBC, 2, 1, 12},
        {NID_id_CA_ECDH_AES_CBC_CMAC_128, 2, 2, 13}, {NID_id_CA_ECDH_AES_CBC_CMAC_192, 2, 3, 15},
        {NID_id_CA_ECDH_AES_CBC_CMAC_256, 2, 4, 18},
    };

    for (const auto& row : rows) {
        const Context context{EAC_CTX_new(), &EAC_CTX_clear_free};
        ASSERT_EQ(EAC_CTX_init_ca(context.get(), row.protocol, row.parameter), 1);
        auto* const keys = context->ca_ctx->ka_ctx;
        auto key = taken(keys->generate_key(keys->key, context->bn_ctx));
        ASSERT_FALSE(key.empty());
        if (row.kind == 1) {
            key = encodedTlv(0x02, key[0] < 0x80 ? key : joined({{0x00}, key}));
        }
        const auto algorithm =
            encodedTlv(0x30, Bytes{0x06, 0x07, 0x04, 0x00, 0x7F, 0x00, 0x07, 0x01, 0x02, 0x02, 0x01, row.parameter});
        const auto keyInfo = encodedTlv(0x30, joined({algorithm, encodedTlv(0x03, joined({{0x00}, key}))}));
        const Bytes protocols{0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02};
        const auto infos =
            joined({encodedTlv(0x30, joined({encodedTlv(0x06, joined({protocols, {0x01, row.kind}})), keyInfo})),
                    encodedTlv(0x30, joined({encodedTlv(0x06, joined({protocols, {0x03, row.kind, row.cipher}})),
                                             {0x02, 0x01, 0x01}}))});
        const auto cipher = row.cipher == 1   ? Cipher::tripleDes
                            : row.cipher == 2 ? Cipher::aes128
                            : row.cipher == 3 ? Cipher::aes192
                                              : Cipher::aes256;
        Bytes secret;
        PlayedCard card{[&](ByteView command) -> std::expected<Bytes, CardError> {
            if ((command[0] & 0x0C) != 0) {
                const auto channel = channelKeys(secret, cipher);
                auto counter = channel.counter;
                counter.back() = 2;
                const auto message = joined({counter, {0x99, 0x02, 0x90, 0x00}});
                const auto blocks = padded(message, blockSize(cipher));
                const auto code = authenticationCode(
                    cipher, channel.authentication, cipher == Cipher::tripleDes ? ByteView{message} : ByteView{blocks});
                return joined({{0x99, 0x02, 0x90, 0x00}, encodedTlv(0x8E, code), done});
            }
            // The terminal's key, in the command for triple DES or in the second of those for AES.
            const auto data = command.subspan(command[4] == 0 ? 7 : 5);
            const auto outer = firstTlv(data);
            EXPECT_TRUE(outer);
            const auto inner = command[1] == 0x86 ? firstTlv(outer->value) : outer;
            if (inner->tag == (command[1] == 0x86 ? 0x80U : 0x91U) && command[3] != 0xA4) {
                EXPECT_EQ(CA_STEP4_compute_shared_secret(context.get(), bufferOf(inner->value).get()), 1);
                secret = bytesIn(keys->shared_secret);
                const auto size = (KeyAgreement::standardised(row.parameter)->primeBits() + 7) / 8;
                secret.insert(secret.begin(), size - secret.size(), 0);
            }
            return command[1] == 0x86 ? Bytes{0x7C, 0x00, 0x90, 0x00} : done;
        }};
        auto channel = channelTo(card);
        channel.capabilities() = {.takesLongMessages = true};
        EXPECT_EQ(authenticateChip(channel, securityInfosIn(encodedTlv(0x31, infos)).value()), ChipProof::proven)
            << row.protocol;
    }
}

} // namespace
} // namespace kivo::reader
