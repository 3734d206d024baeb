#include "reading/ChipProving.hpp"

#include "access/ChipAuthentication.hpp"
#include "tlv/Tlv.hpp"
#include "verification/ActiveAuthentication.hpp"
#include "verification/PassiveAuthentication.hpp"

#include <algorithm>

namespace kivo::reader {
namespace {

template <class T>
using Result = std::expected<T, ChipFault>;

ByteView groupIn(const Files& files, DocumentFile group) {
    const auto found = files.find(group);
    return found == files.end() ? ByteView{} : ByteView{found->second};
}

bool hasSecretOfOne(const MappedChip& mappedChip, const SecurityInfos& infos) {
    return std::ranges::any_of(infos.keys, [&](const auto& offered) {
        const auto key = staticKeyIn(offered.subjectPublicKeyInfo);
        return key && mappedChip.hasSecretOf(key->publicKey);
    });
}

Proof provenByCardSecurity(const Files& files, const MappedChip& mappedChip, const TrustAnchors* anchors) {
    const auto keys = cardSecurityKeys(files, anchors, std::chrono::system_clock::now());
    if (keys.isSigned != Proof::proven) {
        return keys.isSigned;
    }
    const auto infos = securityInfosIn(keys.infos);
    return infos && hasSecretOfOne(mappedChip, *infos) ? Proof::proven : Proof::refuted;
}

Result<Proof> authenticatedActively(Channel& channel, const Files& files) {
    const auto dg15 = groupIn(files, DocumentFile::dg15);
    if (dg15.empty()) {
        return Proof::notTried;
    }
    Bytes challenge(8);
    fillRandomly(challenge);
    const std::size_t expected = channel.capabilities().takesLongMessages ? channel.longestData() : 256;
    const auto answer =
        channel.send({.instruction = 0x88, .data = challenge, .expected = std::min<std::size_t>(expected, 1024)});
    if (!answer && answer.error() != ChipFault::broken) {
        return std::unexpected{answer.error()};
    }
    if (!answer || answer->status != status::success) {
        return Proof::refuted;
    }
    return activeAuthentication(dg15, groupIn(files, DocumentFile::dg14), challenge, answer->data);
}

} // namespace

std::expected<Proof, ChipFault> provenChip(Channel& channel, const Files& files, const MappedChip& mappedChip,
                                           const TrustAnchors* anchors) {
    SecurityInfos infos;
    if (const auto dg14 = groupIn(files, DocumentFile::dg14); !dg14.empty()) {
        const auto set = valueOf(dg14, 0x6E);
        auto read = set ? securityInfosIn(*set) : std::nullopt;
        if (!read) {
            return std::unexpected{ChipFault::broken};
        }
        infos = *std::move(read);
    }
    if (mappedChip.group) {
        const auto proof =
            hasSecretOfOne(mappedChip, infos) ? Proof::proven : provenByCardSecurity(files, mappedChip, anchors);
        if (proof != Proof::notTried) {
            return proof;
        }
    }
    const auto authenticated = authenticateChip(channel, infos);
    if (!authenticated) {
        return std::unexpected{authenticated.error()};
    }
    if (*authenticated != ChipProof::notOffered) {
        return *authenticated == ChipProof::proven ? Proof::proven : Proof::refuted;
    }
    return authenticatedActively(channel, files);
}

} // namespace kivo::reader
