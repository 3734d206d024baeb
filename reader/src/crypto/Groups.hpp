#pragma once

#include "crypto/KeyAgreement.hpp"
#include "crypto/OpenSslObjects.hpp"

namespace kivo::reader {

/// The group of a curve that OpenSSL knows by this name; null where it knows none, or one that is too small.
KeyAgreement::Pointer ellipticGroup(const char* name);
/// The same by OpenSSL's number of the curve.
KeyAgreement::Pointer ellipticGroup(int number);

/// The numbers modulo a prime of 1024 to 4096 bits. `order` may be null where it is not known.
KeyAgreement::Pointer modularGroup(BigNumber prime, BigNumber generator, BigNumber order);

/// A number from its bytes, the first the highest.
BigNumber numberOf(ByteView bytes);
/// The number in exactly `size` bytes.
Secret bytesOf(const BIGNUM* number, std::size_t size);
/// A number of 1 to `bound` - 1.
BigNumber randomNumberBelow(const BIGNUM* bound, const Randomness& randomness);
Arithmetic arithmetic();

} // namespace kivo::reader
