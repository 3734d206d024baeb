#pragma once

#include "access/Password.hpp"
#include "access/SecurityInfos.hpp"
#include "crypto/KeyAgreement.hpp"
#include "messaging/Channel.hpp"

#include <expected>

namespace kivo::reader {

/// What a chip has shown of itself while PACE ran with chip authentication mapping.
struct MappedChip {
    KeyAgreement::Pointer group{};
    /// The public key of the mapping, and the number with which the chip's static key was multiplied to give that key.
    Bytes mappingKey{};
    Bytes factor{};

    /// Whether the chip holds the secret of this public key.
    bool hasSecretOf(ByteView staticKey) const { return group && group->isProduct(staticKey, factor, mappingKey); }
};

/// The variant of PACE to use among those that the chip offers: proof of the chip before none, elliptic before modular,
/// the longer key first. Null where the chip offers none that is known here.
const PaceInfo* preferredPace(const SecurityInfos& infos);

/// Password Authenticated Connection Establishment (ICAO Doc 9303 part 11, 4.4). The channel is protected afterwards.
/// The result's `group` is null unless the mapping authenticates the chip. `areParametersAmbiguous`: the chip offers
/// several domain parameters, so the command names those in use.
std::expected<MappedChip, ChipFault> openByPace(Channel& channel, const PaceInfo& info, bool areParametersAmbiguous,
                                                const Password& password, const Randomness& randomness = fillRandomly);

/// What the pseudo-random function of the integrated mapping gives for both nonces; `bits` is the size of the prime.
Secret pseudoRandomNumber(Cipher cipher, ByteView chipNonce, ByteView ownNonce, std::size_t bits);

} // namespace kivo::reader
