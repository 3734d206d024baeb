#pragma once

#include "Cryptography.hpp"
#include "passport/Tlv.hpp"

#include <openssl/bn.h>
#include <openssl/crypto.h>

#include <memory>

namespace kivo::simulator::chip {

using Number = std::unique_ptr<BIGNUM, Free<BN_clear_free>>;

/// Frees what OpenSSL has encoded.
inline void freeMemory(void* memory) {
    OPENSSL_free(memory);
}

Number newNumber();
Number one();
Number numberIn(View bytes);
Number copyOf(const Number& number);
Bytes bytesOf(const BIGNUM* number);
bool areSame(const Number& left, const Number& right);

/// The numbers below a prime modulus.
class Field {
public:
    explicit Field(const BIGNUM* modulus)
        : modulus_{modulus}
        , scratch_{BN_CTX_new()} {}

    Number reduced(View bytes) const;
    Number sum(const Number& left, const Number& right) const;
    Number product(const Number& left, const Number& right) const;
    Number negative(const Number& number) const;
    Number inverse(const Number& number) const;
    Number power(const Number& base, const Number& exponent) const;

    /// The exponent that leads from a square to its inverse root, where the modulus is 4k + 3:
    /// modulus - 1 - (modulus + 1) / 4.
    Number exponentOfRoot() const;

    /// (modulus - 1) / order.
    Number cofactor(const Number& order) const;

private:
    const BIGNUM* modulus_;
    std::unique_ptr<BN_CTX, Free<BN_CTX_free>> scratch_;
};

} // namespace kivo::simulator::chip
