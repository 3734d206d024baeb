#include "access/Pace.hpp"

#include "tlv/Tlv.hpp"

#include <algorithm>
#include <tuple>

namespace kivo::reader {
namespace {

constexpr std::uint8_t continues = 0x10;
constexpr std::uint32_t dynamicData = 0x7C;
constexpr std::size_t longestNonce = 64;

// The objects of the dialogue, by the tags that the terminal and the chip give them.
constexpr std::uint32_t encryptedNonce = 0x80;
constexpr std::uint32_t ownMapping = 0x81;
constexpr std::uint32_t theirMapping = 0x82;
constexpr std::uint32_t ownPublicKey = 0x83;
constexpr std::uint32_t theirPublicKey = 0x84;
constexpr std::uint32_t ownToken = 0x85;
constexpr std::uint32_t theirToken = 0x86;
constexpr std::uint32_t chipAuthenticationData = 0x8A;

template <class T>
using Result = std::expected<T, ChipFault>;

class Dialogue {
public:
    Dialogue(Channel& channel, const PaceInfo& info, const Password& password, const Randomness& randomness)
        : channel_{channel}
        , info_{info}
        , password_{password}
        , randomness_{randomness}
        , group_{KeyAgreement::standardised(info.parameter)} {}

    Result<MappedChip> run(bool areParametersAmbiguous) {
        if (!group_ || group_->isElliptic() != info_.isElliptic) {
            return std::unexpected{ChipFault::unsupported};
        }
        if (const auto chosen = choose(areParametersAmbiguous); !chosen) {
            return std::unexpected{chosen.error()};
        }
        const auto nonce = fetchNonce();
        if (!nonce) {
            return std::unexpected{nonce.error()};
        }
        const auto mapped = info_.mapping == Mapping::integrated ? mapIntegrated(*nonce) : mapGenerically(*nonce);
        if (!mapped) {
            return std::unexpected{mapped.error()};
        }
        return agree(**mapped);
    }

private:
    Result<void> choose(bool areParametersAmbiguous) {
        Command command{.instruction = 0x22, .parameter1 = 0xC1, .parameter2 = 0xA4};
        append(command.data, encodedTlv(0x80, info_.protocol));
        append(command.data, encodedTlv(0x83, Bytes{static_cast<std::uint8_t>(password_.kind)}));
        if (areParametersAmbiguous) {
            append(command.data, encodedTlv(0x84, Bytes{static_cast<std::uint8_t>(info_.parameter)}));
        }
        const auto answer = channel_.send(command);
        if (!answer) {
            return std::unexpected{answer.error()};
        }
        constexpr std::uint16_t noAttemptIsLeft = 0x63C0;
        if (answer->status == noAttemptIsLeft) {
            return std::unexpected{ChipFault::denied};
        }
        // A chip that counts wrong passwords says here how many more it takes.
        if (answer->status != status::success && !status::isFailedAuthentication(answer->status)) {
            return std::unexpected{ChipFault::unsupported};
        }
        return {};
    }

    // A number modulo a prime of 2048 bits does not fit into a short answer.
    std::size_t longestAnswer() const {
        return group_->primeBits() > 1024 && channel_.capabilities().takesLongMessages ? 512 : 256;
    }

    // One step: an object for the chip, and the objects that the chip answers with.
    Result<Bytes> step(ByteView object, bool isLast = false) {
        const auto answer = channel_.sendInParts({.classByte = isLast ? std::uint8_t{0} : continues,
                                                  .instruction = 0x86,
                                                  .data = encodedTlv(dynamicData, object),
                                                  .expected = longestAnswer()});
        if (!answer) {
            return std::unexpected{answer.error()};
        }
        if (answer->status != status::success) {
            const bool isDenial = isLast || status::isFailedAuthentication(answer->status);
            return std::unexpected{isDenial ? ChipFault::denied : ChipFault::broken};
        }
        const auto objects = firstTlv(answer->data);
        if (!objects || objects->tag != dynamicData || objects->size != answer->data.size()) {
            return std::unexpected{ChipFault::broken};
        }
        return Bytes{objects->value.begin(), objects->value.end()};
    }

    Result<Bytes> step(std::uint32_t tag, ByteView value, std::uint32_t answerTag) {
        const auto objects = step(encodedTlv(tag, value));
        if (!objects) {
            return objects;
        }
        const auto found = valueOf(*objects, answerTag);
        if (!found) {
            return std::unexpected{ChipFault::broken};
        }
        return Bytes{found->begin(), found->end()};
    }

    Result<Secret> fetchNonce() {
        const auto objects = step(ByteView{});
        if (!objects) {
            return std::unexpected{objects.error()};
        }
        const auto cryptogram = valueOf(*objects, encryptedNonce);
        const auto block = blockSize(info_.cipher);
        if (!cryptogram || cryptogram->empty() || cryptogram->size() > longestNonce ||
            cryptogram->size() % block != 0) {
            return std::unexpected{ChipFault::broken};
        }
        const auto key = derivedKey(password_.value, KeyPurpose::password, info_.cipher);
        return decrypted(info_.cipher, key, {}, *cryptogram);
    }

    Result<KeyAgreement::Pointer> mapGenerically(ByteView nonce) {
        const auto own = group_->makeKeyPair(randomness_);
        auto theirs = step(ownMapping, own.publicKey, theirMapping);
        if (!theirs) {
            return std::unexpected{theirs.error()};
        }
        auto mapped = group_->mappedGenerically(nonce, own, *theirs);
        if (!mapped) {
            return std::unexpected{ChipFault::broken};
        }
        theirMappingKey_ = *std::move(theirs);
        return mapped;
    }

    Result<KeyAgreement::Pointer> mapIntegrated(ByteView nonce) {
        if (nonce.size() < keySize(info_.cipher)) {
            return std::unexpected{ChipFault::broken};
        }
        Secret own(keySize(info_.cipher));
        randomness_(own);
        if (const auto objects = step(encodedTlv(ownMapping, own)); !objects) {
            return std::unexpected{objects.error()};
        }
        auto mapped = group_->mappedIntegrated(pseudoRandomNumber(info_.cipher, nonce, own, group_->primeBits()));
        if (!mapped) {
            return std::unexpected{ChipFault::unsupported};
        }
        return mapped;
    }

    Bytes tokenOf(const ChannelKeys& keys, ByteView publicKey) const {
        auto object = encodedTlv(0x06, info_.protocol);
        append(object, encodedTlv(info_.isElliptic ? 0x86 : 0x84, publicKey));
        return authenticationCode(keys.cipher, keys.authentication, encodedTlv(0x7F49, object));
    }

    Result<MappedChip> agree(const KeyAgreement& mapped) {
        const auto own = mapped.makeKeyPair(randomness_);
        const auto theirs = step(ownPublicKey, own.publicKey, theirPublicKey);
        if (!theirs) {
            return std::unexpected{theirs.error()};
        }
        const auto secret = mapped.agree(own, *theirs);
        if (!secret) {
            return std::unexpected{ChipFault::broken};
        }
        auto keys = channelKeys(*secret, info_.cipher);
        const auto objects = step(encodedTlv(ownToken, tokenOf(keys, *theirs)), true);
        if (!objects) {
            return std::unexpected{objects.error()};
        }
        const auto token = valueOf(*objects, theirToken);
        if (!token || !areEqual(*token, tokenOf(keys, own.publicKey))) {
            return std::unexpected{ChipFault::broken};
        }
        MappedChip chip;
        if (info_.mapping == Mapping::chipAuthentication) {
            auto factor = factorIn(*objects, keys);
            if (!factor) {
                return std::unexpected{ChipFault::broken};
            }
            chip = {.group = group_, .mappingKey = std::move(theirMappingKey_), .factor = *std::move(factor)};
        }
        channel_.protect(std::move(keys));
        return chip;
    }

    // The number is enciphered with the channel's key, and the initial vector is the cryptogram of a counter of -1.
    static std::optional<Bytes> factorIn(ByteView objects, const ChannelKeys& keys) {
        const auto cryptogram = valueOf(objects, chipAuthenticationData);
        const auto block = blockSize(keys.cipher);
        if (!cryptogram || cryptogram->empty() || cryptogram->size() % block != 0) {
            return std::nullopt;
        }
        const auto vector = encrypted(keys.cipher, keys.encryption, {}, Bytes(block, 0xFF));
        const auto plain = unpadded(decrypted(keys.cipher, keys.encryption, vector, *cryptogram));
        return plain ? std::optional{Bytes{plain->begin(), plain->end()}} : std::nullopt;
    }

    Channel& channel_;
    const PaceInfo& info_;
    const Password& password_;
    const Randomness& randomness_;
    KeyAgreement::Pointer group_;
    Bytes theirMappingKey_{};
};

} // namespace

const PaceInfo* preferredPace(const SecurityInfos& infos) {
    const auto rank = [](const PaceInfo& info) {
        return std::tuple{info.mapping == Mapping::chipAuthentication, info.isElliptic, keySize(info.cipher)};
    };
    const PaceInfo* best = nullptr;
    for (const auto& info : infos.pace) {
        const auto group = KeyAgreement::standardised(info.parameter);
        if (group && group->isElliptic() == info.isElliptic && (best == nullptr || rank(info) > rank(*best))) {
            best = &info;
        }
    }
    return best;
}

std::expected<MappedChip, ChipFault> openByPace(Channel& channel, const PaceInfo& info, bool areParametersAmbiguous,
                                                const Password& password, const Randomness& randomness) {
    return Dialogue{channel, info, password, randomness}.run(areParametersAmbiguous);
}

} // namespace kivo::reader
