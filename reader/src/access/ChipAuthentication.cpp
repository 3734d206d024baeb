#include "access/ChipAuthentication.hpp"

#include "crypto/KeyAgreement.hpp"
#include "tlv/Tlv.hpp"

#include <array>

namespace kivo::reader {
namespace {

// id-CA-DH-3DES-CBC-CBC and id-CA-ECDH-3DES-CBC-CBC, which a chip means that offers a key without saying what for.
const Bytes modularWithTripleDes{0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02, 0x03, 0x01, 0x01};
const Bytes ellipticWithTripleDes{0x04, 0x00, 0x7F, 0x00, 0x07, 0x02, 0x02, 0x03, 0x02, 0x01};

struct Choice {
    ChipAuthenticationInfo info{};
    StaticKey key{};
};

// The strongest cipher among the infos whose key is usable.
std::optional<Choice> choiceAmong(const SecurityInfos& infos) {
    std::optional<Choice> best;
    for (const auto& offered : infos.keys) {
        const auto key = staticKeyIn(offered.subjectPublicKeyInfo);
        if (!key || key->group->isElliptic() != offered.isElliptic) {
            continue;
        }
        auto candidates = infos.chipAuthentication;
        if (candidates.empty()) {
            candidates.push_back({.protocol = offered.isElliptic ? ellipticWithTripleDes : modularWithTripleDes,
                                  .isElliptic = offered.isElliptic,
                                  .cipher = Cipher::tripleDes,
                                  .keyNumber = offered.keyNumber});
        }
        for (auto& info : candidates) {
            const bool fits = info.isElliptic == offered.isElliptic && info.keyNumber == offered.keyNumber;
            if (fits && (!best || info.cipher > best->info.cipher)) {
                best = Choice{.info = std::move(info), .key = *key};
            }
        }
    }
    return best;
}

// The commands that hand the terminal's public key to the chip. With triple DES that is one command, with AES two.
std::vector<Command> commandsOf(const ChipAuthenticationInfo& info, ByteView publicKey) {
    const auto reference = info.keyNumber ? encodedTlv(0x84, *info.keyNumber) : Bytes{};
    Command set{.instruction = 0x22, .parameter1 = 0x41, .parameter2 = 0xA4};
    if (info.cipher == Cipher::tripleDes) {
        set.parameter2 = 0xA6;
        set.data = encodedTlv(0x91, publicKey);
        append(set.data, reference);
        return {set};
    }
    set.data = encodedTlv(0x80, info.protocol);
    append(set.data, reference);
    return {set, Command{.instruction = 0x86, .data = encodedTlv(0x7C, encodedTlv(0x80, publicKey)), .expected = 256}};
}

bool tellsOfTheChip(ChipFault fault) {
    return fault == ChipFault::broken || fault == ChipFault::denied || fault == ChipFault::unsupported;
}

} // namespace

std::expected<ChipProof, ChipFault> authenticateChip(Channel& channel, const SecurityInfos& infos,
                                                     const Randomness& randomness) {
    const auto choice = choiceAmong(infos);
    if (!choice) {
        return ChipProof::notOffered;
    }
    const auto own = choice->key.group->makeKeyPair(randomness);
    const auto secret = choice->key.group->agree(own, choice->key.publicKey);
    if (!secret) {
        return ChipProof::refuted;
    }
    auto commands = commandsOf(choice->info, own.publicKey);
    // Any command proves the chip, once its answer is protected with the new keys.
    commands.push_back({.instruction = 0xA4, .parameter1 = 0x02, .parameter2 = 0x0C, .data = {0x01, 0x0E}});
    for (std::size_t i = 0; i < commands.size(); ++i) {
        if (i + 1 == commands.size()) {
            channel.protect(channelKeys(*secret, choice->info.cipher));
        }
        const auto answer = channel.sendInParts(commands[i]);
        if (!answer && !tellsOfTheChip(answer.error())) {
            return std::unexpected{answer.error()};
        }
        if (!answer || answer->status != status::success) {
            return ChipProof::refuted;
        }
    }
    return ChipProof::proven;
}

} // namespace kivo::reader
