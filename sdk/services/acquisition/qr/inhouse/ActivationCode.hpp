#pragma once

#include <kivo/platform/Text.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// Whether a person has typed a whole activation code. Only the identity service knows whether the code is valid.
inline bool isCompleteActivationCode(std::string_view code) {
    constexpr std::size_t length = 6;
    return text::characterCount(code) == length;
}

/// The payload of a QR code of the identity service: a JSON object, in UTF-8, with the activation code as its member
/// "code".
struct QRCodeData {
    std::string code;

    /// The payload in a QR code's text; absent unless the member "code" is a string. Other members are ignored.
    static std::optional<QRCodeData> decode(std::string_view text);

    std::string encode() const;
};

} // namespace kivo
