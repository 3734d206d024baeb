#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>

#include <string>
#include <string_view>

namespace kivo::check {

/// The first certificate of a PEM text in DER form.
inline std::string derOf(std::string_view pem) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto start = pem.find('\n') + 1;
    std::string bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char character : pem.substr(start, pem.find('-', start) - start)) {
        const auto value = alphabet.find(character);
        if (value == std::string_view::npos) {
            continue;
        }
        bits = bits << 6 | static_cast<unsigned>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

} // namespace kivo::check
