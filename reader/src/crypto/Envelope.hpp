#pragma once

#include <kivo/reader/Card.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::reader {

/// A key for which a message is encrypted.
class EnvelopeKey {
public:
    /// The key in base64: 32 bytes, or a certificate in DER form. Absent for anything else.
    static std::optional<EnvelopeKey> parsed(std::string_view text);

private:
    friend std::optional<Bytes> sealedMessage(ByteView plain, const std::vector<EnvelopeKey>& recipients);

    struct Content;

    explicit EnvelopeKey(std::shared_ptr<const Content> content);

    std::shared_ptr<const Content> content_;
};

/// `plain` as a CMS message (AuthEnvelopedData with AES-256-GCM) in DER form, which each of the recipients can open.
/// Absent where there is no recipient, or where a certificate's key cannot encrypt.
std::optional<Bytes> sealedMessage(ByteView plain, const std::vector<EnvelopeKey>& recipients);

} // namespace kivo::reader
