#pragma once

#include "crypto/Cryptography.hpp"

#include <memory>
#include <optional>

namespace kivo::reader {

/// A key pair for one agreement.
struct KeyPair {
    Secret secretKey{};
    /// A point with both coordinates (0x04 before them), or a number without leading zeros.
    Bytes publicKey{};
};

/// A group in which two parties agree on a secret: points of an elliptic curve, or numbers modulo a prime. Every public
/// key of the other party is checked for being an element of the group before anything is calculated with it.
/// Immutable.
class KeyAgreement {
public:
    using Pointer = std::shared_ptr<const KeyAgreement>;

    /// The group of a standardised domain parameter (ICAO Doc 9303 part 11, 9.5.1): 0 to 2 are groups of RFC 5114, 8 to
    /// 18 curves of NIST and brainpool. Null for other numbers.
    static Pointer standardised(int parameter);

    virtual ~KeyAgreement() = default;

    virtual bool isElliptic() const = 0;

    virtual KeyPair makeKeyPair(const Randomness& randomness) const = 0;

    /// The shared secret: the first coordinate, or the number. Absent where `theirs` is no public key of the group, or
    /// equals the own one.
    virtual std::optional<Secret> agree(const KeyPair& own, ByteView theirs) const = 0;

    /// The same group with the generator that the nonce and an agreement give; null where `theirs` is no public key, or
    /// the generator would be of no use.
    virtual Pointer mappedGenerically(ByteView nonce, const KeyPair& own, ByteView theirs) const = 0;

    /// The same group with the generator that the output of the pseudo-random function gives; null where the group
    /// offers no such mapping.
    virtual Pointer mappedIntegrated(ByteView pseudoRandom) const = 0;

    /// The number of bits of the prime.
    virtual std::size_t primeBits() const = 0;

    /// Whether `product` is the public key `base` multiplied (or raised) by `factor`.
    virtual bool isProduct(ByteView base, ByteView factor, ByteView product) const = 0;

    /// The generator, as a public key is written.
    virtual Bytes generator() const = 0;
};

/// A public key that is kept on the chip, with its group.
struct StaticKey {
    KeyAgreement::Pointer group{};
    Bytes publicKey{};
};

/// The key in a SubjectPublicKeyInfo: an EC key of a named curve or with the explicit parameters of a named curve, a DH
/// key (X9.42 or PKCS #3), or a key with a standardised domain parameter. Absent where it is none of them.
std::optional<StaticKey> staticKeyIn(ByteView subjectPublicKeyInfo);

} // namespace kivo::reader
