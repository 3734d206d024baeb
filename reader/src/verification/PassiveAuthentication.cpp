#include "verification/PassiveAuthentication.hpp"

#include "crypto/SignedData.hpp"
#include "tlv/Tlv.hpp"
#include "verification/SecurityObject.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace kivo::reader {
namespace {

constexpr std::string_view securityObjectKind = "2.23.136.1.1.1";
constexpr std::string_view cardSecurityKind = "0.4.0.127.0.7.3.2.1";
constexpr std::size_t largestMessage = std::size_t{1} << 18;

constexpr std::array<std::pair<DocumentFile, int>, 7> groups{{{DocumentFile::dg1, 1},
                                                              {DocumentFile::dg2, 2},
                                                              {DocumentFile::dg7, 7},
                                                              {DocumentFile::dg11, 11},
                                                              {DocumentFile::dg12, 12},
                                                              {DocumentFile::dg14, 14},
                                                              {DocumentFile::dg15, 15}}};

Proof proofOf(bool holds) {
    return holds ? Proof::proven : Proof::refuted;
}

std::optional<SignedMessage> messageIn(ByteView der, std::string_view kind) {
    auto message = der.size() > largestMessage ? std::nullopt : SignedMessage::read(der);
    return message && message->contentType() == kind ? std::move(message) : std::nullopt;
}

std::optional<SignedMessage> securityObjectOf(const Files& files) {
    const auto found = files.find(DocumentFile::sod);
    const auto file = found == files.end() ? std::nullopt : firstTlv(found->second);
    return file && file->tag == 0x77 ? messageIn(file->value, securityObjectKind) : std::nullopt;
}

std::optional<SignedMessage> cardSecurityOf(const Files& files) {
    const auto found = files.find(DocumentFile::cardSecurity);
    return found == files.end() ? std::nullopt : messageIn(found->second, cardSecurityKind);
}

bool digestsAgree(const Files& files, const SecurityObject& object) {
    return std::ranges::all_of(groups, [&](const auto& group) {
        const auto file = files.find(group.first);
        if (file == files.end()) {
            return true;
        }
        const auto signedDigest = object.digests.find(group.second);
        const auto digest = digestBy(object.digestFunction, file->second);
        return signedDigest != object.digests.end() && !digest.empty() && digest == signedDigest->second;
    });
}

// Digests that differ refute the data, whoever has signed them. Digests that agree prove something when they are
// signed.
Proof dataProof(const Files& files, const SignedMessage& message, Proof signature) {
    const auto object = securityObjectIn(message.content());
    if (!object || !digestsAgree(files, *object)) {
        return Proof::refuted;
    }
    const bool hasGroup = std::ranges::any_of(groups, [&](const auto& group) { return files.contains(group.first); });
    return hasGroup && signature == Proof::proven ? Proof::proven : Proof::notTried;
}

bool datesHold(const Certificate& signer, const std::optional<SignerPath>& path,
               std::optional<std::chrono::system_clock::time_point> signingTime,
               std::chrono::system_clock::time_point now) {
    constexpr std::chrono::hours mostBetweenClocks{24};
    const auto time = signingTime.value_or(now);
    const auto isValid = [time](const Certificate& certificate) { return certificate.isValidAt(time); };
    return time <= now + mostBetweenClocks && isValid(signer) &&
           (!path || std::ranges::all_of(path->authorities, isValid));
}

// Who has signed a message, and what becomes of the proofs about that.
struct Signing {
    std::optional<Certificate> signer{};
    Verdict verdict{};
};

Signing signingOf(const SignedMessage& message, const TrustAnchors* anchors,
                  std::chrono::system_clock::time_point now) {
    Signing signing{.signer = anchors == nullptr ? message.signer() : message.signer(anchors->signers())};
    if (!signing.signer) {
        return signing;
    }
    auto& verdict = signing.verdict;
    verdict.signatureHolds = proofOf(message.signatureHolds(*signing.signer));
    std::optional<SignerPath> path;
    if (anchors != nullptr && !anchors->isEmpty()) {
        path = anchors->pathOf(*signing.signer);
        verdict.signerIsTrusted = proofOf(path.has_value());
        verdict.signerIsNotRevoked = path ? path->isNotRevoked : Proof::notTried;
    }
    verdict.datesHold = proofOf(datesHold(*signing.signer, path, message.signingTime(), now));
    return signing;
}

} // namespace

Verdict passiveVerdict(const Files& files, const TrustAnchors* anchors, std::chrono::system_clock::time_point now) {
    const auto message = securityObjectOf(files);
    if (!message) {
        // A file that is there but cannot be a security object is a forgery, or broken.
        return {.signatureHolds = files.contains(DocumentFile::sod) ? Proof::refuted : Proof::notTried};
    }
    auto verdict = signingOf(*message, anchors, now).verdict;
    verdict.dataIsUnchanged = dataProof(files, *message, verdict.signatureHolds);
    return verdict;
}

SignedKeys cardSecurityKeys(const Files& files, const TrustAnchors* anchors,
                            std::chrono::system_clock::time_point now) {
    const auto message = cardSecurityOf(files);
    if (!message) {
        return {.isSigned = files.contains(DocumentFile::cardSecurity) ? Proof::refuted : Proof::notTried};
    }
    const auto signing = signingOf(*message, anchors, now);
    const auto& verdict = signing.verdict;
    SignedKeys keys{.infos = {message->content().begin(), message->content().end()},
                    .isSigned = verdict.signatureHolds};
    if (verdict.signerIsTrusted == Proof::refuted || verdict.signerIsNotRevoked == Proof::refuted) {
        keys.isSigned = Proof::refuted;
    } else if (verdict.signerIsTrusted == Proof::notTried && keys.isSigned == Proof::proven) {
        const auto object = securityObjectOf(files);
        const auto signer = object ? object->signer() : std::nullopt;
        keys.isSigned = signer && *signer == *signing.signer ? Proof::proven : Proof::notTried;
    }
    return keys;
}

} // namespace kivo::reader
