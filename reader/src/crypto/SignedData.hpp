#pragma once

#include "crypto/Certificate.hpp"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct CMS_ContentInfo_st;

namespace kivo::reader {

/// A signed message (CMS) with its content in it and one signer: a document's security object, the security file of a
/// card, a master list.
class SignedMessage {
public:
    /// Absent for anything else, and for more than 16 MiB.
    static std::optional<SignedMessage> read(ByteView der);

    ByteView content() const { return signedContent; }

    /// The kind of the content, in dotted form.
    const std::string& contentType() const { return kind; }

    /// The certificate of the signer: of those in the message, else of `others`. Absent where there is none.
    std::optional<Certificate> signer(std::span<const Certificate> others = {}) const;
    /// Whether the signer's key has signed the content. Says nothing about whom the certificate belongs to, and looks
    /// at no date.
    bool signatureHolds(const Certificate& signer) const;
    /// When the signer says that the message was signed.
    std::optional<std::chrono::system_clock::time_point> signingTime() const;

private:
    SignedMessage() = default;
    std::shared_ptr<CMS_ContentInfo_st> message;
    Bytes signedContent;
    std::string kind;
};

/// The digest of the data by a function of the family SHA-1 or SHA-2, named by its dotted identifier; empty for
/// another.
Bytes digestBy(const std::string& identifier, ByteView data);

} // namespace kivo::reader
