#include "access/Pace.hpp"

#include <array>

namespace kivo::reader {
namespace {

using Constant = std::array<std::uint8_t, 32>;

// The constants of ICAO Doc 9303 part 11, 4.4.3.3.2. Ciphers with keys of 16 bytes use sixteen bytes of their own.
constexpr std::array<std::uint8_t, 16> shortForKey{0xA6, 0x68, 0x89, 0x2A, 0x7C, 0x41, 0xE3, 0xCA,
                                                   0x73, 0x9F, 0x40, 0xB0, 0x57, 0xD8, 0x59, 0x04};
constexpr std::array<std::uint8_t, 16> shortForOutput{0xA4, 0xE1, 0x36, 0xAC, 0x72, 0x5F, 0x73, 0x8B,
                                                      0x01, 0xC1, 0xF6, 0x02, 0x17, 0xC1, 0x88, 0xAD};
constexpr Constant longForKey{0xD4, 0x63, 0xD6, 0x52, 0x34, 0x12, 0x4E, 0xF7, 0x89, 0x70, 0x54,
                              0x98, 0x6D, 0xCA, 0x0A, 0x17, 0x4E, 0x28, 0xDF, 0x75, 0x8C, 0xBA,
                              0xA0, 0x3F, 0x24, 0x06, 0x16, 0x41, 0x4D, 0x5A, 0x16, 0x76};
constexpr Constant longForOutput{0x54, 0xBD, 0x72, 0x55, 0xF0, 0xAA, 0xF8, 0x31, 0xBE, 0xC3, 0x42,
                                 0x3F, 0xCF, 0x39, 0xD6, 0x9B, 0x6C, 0xBF, 0x06, 0x66, 0x77, 0xD0,
                                 0xFA, 0xAE, 0x5A, 0xAD, 0xD9, 0x9D, 0xF8, 0xE5, 0x35, 0x17};
constexpr std::size_t surplusBits = 64;

} // namespace

Secret pseudoRandomNumber(Cipher cipher, ByteView chipNonce, ByteView ownNonce, std::size_t bits) {
    const bool isLong = keySize(cipher) > 16;
    const ByteView forKey = isLong ? ByteView{longForKey} : ByteView{shortForKey};
    const ByteView forOutput = isLong ? ByteView{longForOutput} : ByteView{shortForOutput};
    auto state = encrypted(cipher, ownNonce, {}, chipNonce);
    Secret number;
    while (number.size() * 8 < bits + surplusBits) {
        const auto key = ByteView{state}.first(keySize(cipher));
        const auto output = encrypted(cipher, key, {}, forOutput);
        number.insert(number.end(), output.begin(), output.end());
        state = encrypted(cipher, key, {}, forKey);
    }
    return number;
}

} // namespace kivo::reader
