#pragma once

#include "crypto/Cryptography.hpp"

#include <optional>
#include <vector>

namespace kivo::reader {

/// How the nonce of PACE becomes a generator.
enum class Mapping { generic, integrated, chipAuthentication };

/// A variant of PACE that a chip offers, with standardised domain parameters.
struct PaceInfo {
    /// The value of the object identifier.
    Bytes protocol{};
    Mapping mapping = Mapping::generic;
    bool isElliptic = true;
    Cipher cipher = Cipher::aes128;
    int parameter = 0;
};

/// A variant of chip authentication that a chip offers.
struct ChipAuthenticationInfo {
    Bytes protocol{};
    bool isElliptic = true;
    Cipher cipher = Cipher::tripleDes;
    /// The number of the key; absent where the chip has one key only.
    std::optional<Bytes> keyNumber{};
};

/// A public key of the chip.
struct ChipAuthenticationKey {
    Bytes subjectPublicKeyInfo{};
    bool isElliptic = true;
    std::optional<Bytes> keyNumber{};
};

/// What a chip says about its access protocols (ICAO Doc 9303 part 11, 9.2). What is of another kind is left out.
struct SecurityInfos {
    std::vector<PaceInfo> pace{};
    std::vector<ChipAuthenticationInfo> chipAuthentication{};
    std::vector<ChipAuthenticationKey> keys{};
    /// Whether the chip offers PACE at all, with whatever parameters.
    bool offersPace = false;
};

/// The infos in the SET that EF.CardAccess, DG14 (below its tag) and EF.CardSecurity (in its signed content) hold;
/// absent where the bytes are no such set of at most 64 infos.
std::optional<SecurityInfos> securityInfosIn(ByteView set);

} // namespace kivo::reader
