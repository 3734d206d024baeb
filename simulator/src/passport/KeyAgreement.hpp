#pragma once

#include "passport/Ciphers.hpp"

#include <memory>
#include <optional>

namespace kivo::simulator::chip {

/// Standardised domain parameters of a key agreement: a curve, or a group of numbers. Elements are bytes as they are
/// sent: points with both coordinates, numbers with the length of the modulus. An absent element is none of the
/// group, or the neutral one.
class KeyAgreement {
public:
    /// The parameters with the number; null for a number that means nothing.
    static std::unique_ptr<KeyAgreement> make(int domainParameters);
    virtual ~KeyAgreement() = default;

    virtual bool isCurve() const = 0;

    /// The order of the generator, without leading zeros.
    virtual Bytes order() const = 0;

    /// The generator with which everybody begins.
    virtual Bytes generator() const = 0;

    /// `element` taken `secret` times.
    virtual std::optional<Bytes> multiple(View element, View secret) const = 0;

    /// The two elements taken together.
    virtual std::optional<Bytes> sum(View left, View right) const = 0;

    /// The element to which integrated mapping leads from bytes of chance.
    virtual std::optional<Bytes> elementFrom(View pseudoRandom) const = 0;

    /// The bits of the field's numbers.
    virtual std::size_t fieldBits() const = 0;

    /// The shared secret in an element on which both sides agree.
    virtual Bytes secretIn(View element) const = 0;

    /// The domain parameters as SubjectPublicKeyInfo carries them, and the key behind them.
    virtual Bytes publicKeyInfo(View publicKey) const = 0;

    /// A private key.
    Bytes newSecret(const Random& random) const;

    /// left / right modulo the order.
    Bytes quotient(View left, View right) const;
};

} // namespace kivo::simulator::chip
