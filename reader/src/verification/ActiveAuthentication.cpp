#include "verification/ActiveAuthentication.hpp"

#include "crypto/PublicKey.hpp"
#include "crypto/SignedData.hpp"
#include "tlv/ObjectIdentifier.hpp"
#include "tlv/Tlv.hpp"

#include <algorithm>
#include <array>

namespace kivo::reader {
namespace {

struct SignatureDigest {
    std::string_view identifier;
    /// The number of the function in a signature's last but one byte (ISO/IEC 10118-3).
    std::uint8_t trailer;
    /// The number of the function in the identifiers of plain ECDSA.
    std::string_view plainEcdsa;
};

constexpr std::array<SignatureDigest, 5> digests{{{"1.3.14.3.2.26", 0x33, "0.4.0.127.0.7.1.1.4.1.1"},
                                                  {"2.16.840.1.101.3.4.2.4", 0x38, "0.4.0.127.0.7.1.1.4.1.2"},
                                                  {"2.16.840.1.101.3.4.2.1", 0x34, "0.4.0.127.0.7.1.1.4.1.3"},
                                                  {"2.16.840.1.101.3.4.2.2", 0x36, "0.4.0.127.0.7.1.1.4.1.4"},
                                                  {"2.16.840.1.101.3.4.2.3", 0x35, "0.4.0.127.0.7.1.1.4.1.5"}}};

// What the trailer names: the digest function and the trailer's own size.
std::optional<std::pair<std::string, std::size_t>> functionOf(ByteView representative) {
    constexpr std::uint8_t onlySha1 = 0xBC;
    constexpr std::uint8_t functionIsNamed = 0xCC;
    const auto last = representative.back();
    if (last == onlySha1) {
        return std::pair{std::string{digests[0].identifier}, std::size_t{1}};
    }
    const auto* found =
        std::ranges::find(digests, representative[representative.size() - 2], &SignatureDigest::trailer);
    if (last != functionIsNamed || found == digests.end()) {
        return std::nullopt;
    }
    return std::pair{std::string{found->identifier}, std::size_t{2}};
}

// The representative is 6A, a part of the message, the digest of that part and the challenge, and the trailer.
bool representativeHolds(ByteView representative, ByteView challenge) {
    constexpr std::uint8_t partialRecovery = 0x6A;
    if (representative.size() < 2 || representative[0] != partialRecovery) {
        return false;
    }
    const auto function = functionOf(representative);
    if (!function) {
        return false;
    }
    const auto [name, trailerSize] = *function;
    const auto digestSize = digestBy(name, {}).size();
    if (representative.size() < 1 + digestSize + trailerSize) {
        return false;
    }
    const auto body = representative.subspan(1, representative.size() - 1 - trailerSize);
    const auto recovered = body.first(body.size() - digestSize);
    Bytes message{recovered.begin(), recovered.end()};
    message.insert(message.end(), challenge.begin(), challenge.end());
    return std::ranges::equal(digestBy(name, message), body.last(digestSize));
}

bool rsaHolds(const PublicKey& key, ByteView challenge, ByteView answer) {
    const auto representative = key.recovered(answer);
    return !representative.empty() && (representativeHolds(representative, challenge) ||
                                       representativeHolds(key.complement(representative), challenge));
}

// The identifier of the signature that DG14 names for active authentication; empty where there is none.
std::string namedSignature(ByteView dg14) {
    const auto file = firstTlv(dg14);
    const auto set = file && file->tag == 0x6E ? valueOf(file->value, 0x31) : std::nullopt;
    const auto infos = set ? allTlv(*set) : std::nullopt;
    if (!infos) {
        return {};
    }
    for (const auto& info : *infos) {
        const auto parts = allTlv(info.value);
        if (parts && parts->size() == 3 && (*parts)[0].tag == 0x06 && (*parts)[2].tag == 0x06 &&
            dottedIdentifier((*parts)[0].value) == "2.23.136.1.1.5") {
            return dottedIdentifier((*parts)[2].value);
        }
    }
    return {};
}

bool curveHolds(const PublicKey& key, ByteView dg14, ByteView challenge, ByteView answer) {
    const auto named = namedSignature(dg14);
    return std::ranges::any_of(digests, [&](const SignatureDigest& digest) {
        return (named.empty() || named == digest.plainEcdsa) &&
               key.plainSignatureHolds(digestBy(std::string{digest.identifier}, challenge), answer);
    });
}

} // namespace

Proof activeAuthentication(ByteView dg15, ByteView dg14, ByteView challenge, ByteView answer) {
    const auto file = firstTlv(dg15);
    const auto key = file && file->tag == 0x6F ? PublicKey::read(file->value) : std::nullopt;
    if (!key) {
        return Proof::notTried;
    }
    const bool holds = key->isRsa() ? rsaHolds(*key, challenge, answer) : curveHolds(*key, dg14, challenge, answer);
    return holds ? Proof::proven : Proof::refuted;
}

} // namespace kivo::reader
