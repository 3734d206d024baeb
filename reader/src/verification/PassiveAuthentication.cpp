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
constexpr std::size_t largestSecurityObject = std::size_t{1} << 18;

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

std::optional<SignedMessage> messageIn(const Files& files) {
    const auto found = files.find(DocumentFile::sod);
    if (found == files.end() || found->second.size() > largestSecurityObject) {
        return std::nullopt;
    }
    const auto file = firstTlv(found->second);
    auto message = file && file->tag == 0x77 ? SignedMessage::read(file->value) : std::nullopt;
    return message && message->contentType() == securityObjectKind ? std::move(message) : std::nullopt;
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

} // namespace

Verdict passiveVerdict(const Files& files, const TrustAnchors* anchors, std::chrono::system_clock::time_point now) {
    Verdict verdict;
    const auto message = messageIn(files);
    if (!message) {
        // A file that is there but cannot be a security object is a forgery, or broken.
        verdict.signatureHolds = files.contains(DocumentFile::sod) ? Proof::refuted : Proof::notTried;
        return verdict;
    }
    const auto signer = anchors == nullptr ? message->signer() : message->signer(anchors->signers());
    if (signer) {
        verdict.signatureHolds = proofOf(message->signatureHolds(*signer));
    }
    verdict.dataIsUnchanged = dataProof(files, *message, verdict.signatureHolds);
    if (!signer) {
        return verdict;
    }
    std::optional<SignerPath> path;
    if (anchors != nullptr && !anchors->isEmpty()) {
        path = anchors->pathOf(*signer);
        verdict.signerIsTrusted = proofOf(path.has_value());
        verdict.signerIsNotRevoked = path ? path->isNotRevoked : Proof::notTried;
    }
    verdict.datesHold = proofOf(datesHold(*signer, path, message->signingTime(), now));
    return verdict;
}

} // namespace kivo::reader
