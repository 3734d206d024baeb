#pragma once

#include "passport/Tlv.hpp"

#include <kivo/simulator/Passport.hpp>

#include <openssl/evp.h>

#include <functional>

namespace kivo::simulator::chip {

/// Fills bytes with random numbers.
using Random = std::function<void(std::span<std::uint8_t>)>;

/// That many bytes of chance.
Bytes randomBytes(const Random& random, std::size_t count);

const EVP_MD* hashFunction(HashFunction function);
Bytes digest(HashFunction function, View data);

/// The purposes of derived keys, by the numbers that the derivation uses.
enum class Purpose : std::uint8_t { encryption = 1, authentication = 2, password = 3 };

/// The key that belongs to a secret (ICAO Doc 9303 part 11, 9.7.1).
Bytes derivedKey(ChipCipher cipher, View secret, Purpose purpose);

std::size_t blockSize(ChipCipher cipher);
std::size_t keySize(ChipCipher cipher);

/// CBC without padding; `data` is a whole number of blocks. An empty initial vector is one of zeros.
Bytes encrypted(ChipCipher cipher, View key, View data, View initialVector = {});
Bytes decrypted(ChipCipher cipher, View key, View data, View initialVector = {});

/// The padding 80 00 ... up to whole blocks, and back; absent where there is none.
Bytes padded(View data, std::size_t block);
std::optional<Bytes> unpadded(View data);

/// Eight bytes of authentication: the retail MAC over the padded data with 3DES, else CMAC over the data.
Bytes authenticationCode(ChipCipher cipher, View key, View data);

/// Compares in a time that does not tell the place of a difference.
bool areEqual(View left, View right);

} // namespace kivo::simulator::chip
