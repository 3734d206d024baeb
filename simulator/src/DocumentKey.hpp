#pragma once

#include "Cryptography.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// The key for which a document reader encrypts documents (CMS, RFC 5652 and RFC 5083).
class DocumentKey {
public:
    explicit DocumentKey(DocumentEncryption kind);

    /// The key as sessions hand it out: base64 of 32 bytes, or of a certificate in DER. Empty without encryption.
    const std::string& text() const { return text_; }

    /// The content of a message for this key; absent where the message is for another one, changed, or none.
    std::optional<std::string> opened(std::string_view message) const;

private:
    std::string text_;
    /// Null where the key is the text's 32 bytes.
    Key privateKey_;
    Certificate certificate_;
};

} // namespace kivo::simulator
