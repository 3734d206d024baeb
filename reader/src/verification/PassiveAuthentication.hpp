#pragma once

#include "files/Document.hpp"
#include "verification/TrustAnchors.hpp"
#include "verification/Verdict.hpp"

#include <chrono>

namespace kivo::reader {

/// What the files of a document prove by the security object among them (ICAO Doc 9303 part 11, passive
/// authentication). Fills all members but `chipIsGenuine`.
///
/// - The data are unchanged when each group among `files`, keys included, has the digest that was signed. A group that
///   the signer does not name refutes the proof.
/// - The certificate of the signer comes from the document, else from `anchors`, which may be null.
/// - Signatures are looked at without regard to dates. The dates hold when the certificates were valid at the time that
///   the signer gives, or at `now` where the signer gives none.
Verdict passiveVerdict(const Files& files, const TrustAnchors* anchors, std::chrono::system_clock::time_point now);

/// The infos with the chip's keys in EF.CardSecurity.
struct SignedKeys {
    Bytes infos{};
    /// Whether the infos are signed as those of the document must be, by the rules above but for dates: by a signer
    /// whom the host trusts and nobody has revoked. Where `anchors` has no authority the signer must be that of EF.SOD,
    /// and the signature of another is `notTried`, because anybody can make one. A file that is no signed message is
    /// refuted.
    Proof isSigned = Proof::notTried;
};

SignedKeys cardSecurityKeys(const Files& files, const TrustAnchors* anchors, std::chrono::system_clock::time_point now);

} // namespace kivo::reader
