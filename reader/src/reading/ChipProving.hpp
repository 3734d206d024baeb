#pragma once

#include "access/Pace.hpp"
#include "files/Document.hpp"
#include "messaging/Channel.hpp"
#include "verification/TrustAnchors.hpp"
#include "verification/Verdict.hpp"

#include <expected>

namespace kivo::reader {

/// Whether the chip holds the private key to a public key among the files that were read: by the mapping with which the
/// chip was opened, else by chip authentication, else by active authentication. `notTried` where the chip offers none.
///
/// The key of the mapping stands in DG14, or in EF.CardSecurity, whose signature is checked here; a false one refutes
/// the proof. Of a key in a group the proof is worth as much as the group's digest. `anchors` may be null.
std::expected<Proof, ChipFault> provenChip(Channel& channel, const Files& files, const MappedChip& mappedChip,
                                           const TrustAnchors* anchors);

} // namespace kivo::reader
