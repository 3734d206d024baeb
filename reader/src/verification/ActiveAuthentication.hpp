#pragma once

#include "verification/Verdict.hpp"

#include <kivo/reader/Card.hpp>

namespace kivo::reader {

/// Whether the answer to the challenge was made with the private key to the public key in DG15 (ICAO Doc 9303 part 11,
/// active authentication): RSA with partial recovery (ISO/IEC 9796-2, scheme 1), or ECDSA with r and s side by side.
/// The digest function of ECDSA is what DG14 names; without DG14 (empty), each is tried. `notTried` for a key that is
/// none of these.
///
/// Proves something only where DG15 itself is proven unchanged. `answer` comes without the two bytes of status.
Proof activeAuthentication(ByteView dg15, ByteView dg14, ByteView challenge, ByteView answer);

} // namespace kivo::reader
