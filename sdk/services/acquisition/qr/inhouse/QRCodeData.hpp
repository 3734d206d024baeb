#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// What a QR code of the identity service says: a JSON object, in UTF-8, with the activation code as its member "code".
struct QRCodeData {
    std::string code;

    /// The payload in a QR code's text; absent unless "code" is there and is a string. Other members are ignored.
    static std::optional<QRCodeData> decode(std::string_view text);

    std::string encode() const;
};

} // namespace kivo
