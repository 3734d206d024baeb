#pragma once

#include <kivo/reader/Card.hpp>

#include <memory>
#include <optional>
#include <string>

struct evp_pkey_st;

namespace kivo::reader {

/// A public key as chips name theirs (SubjectPublicKeyInfo): RSA of 1024 to 8192 bits, or an elliptic curve, also with
/// its parameters spelled out.
class PublicKey {
public:
    static std::optional<PublicKey> read(ByteView der);

    bool isRsa() const;
    /// What an RSA signature holds: the signature to the power of the key, in the size of the modulus. Empty for a
    /// signature that is no number below the modulus.
    Bytes recovered(ByteView signature) const;
    /// The same number taken from the modulus, for signatures that ISO/IEC 9796-2 made smaller.
    Bytes complement(ByteView recovered) const;
    /// Whether an elliptic curve's signature, r and s side by side, holds for the digest.
    bool plainSignatureHolds(ByteView digest, ByteView signature) const;

private:
    Bytes modulus{};
    Bytes exponent{};
    std::shared_ptr<evp_pkey_st> curveKey{};
};

} // namespace kivo::reader
