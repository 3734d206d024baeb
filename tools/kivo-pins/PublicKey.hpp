#pragma once

#include <openssl/x509.h>

#include <chrono>
#include <optional>
#include <string>

namespace pins {

/// A key that may be pinned, with what is known of the certificate it came in.
struct PublicKey {
    /// "leaf", "intermediate", "root", or "key" for one without a certificate.
    std::string kind;
    std::string subject{};
    std::optional<std::chrono::sys_seconds> expires{};
    /// Such as "RSA 2048".
    std::string type{};
    /// The SDK's pin; absent for a key that it cannot pin.
    std::optional<std::string> pin{};
    /// The digest of the key's own SubjectPublicKeyInfo (RFC 7469), which other software calls the pin.
    std::string standardPin{};
};

PublicKey describe(X509& certificate);
PublicKey describe(const EVP_PKEY& key);

/// The lines about a key, indented.
std::string text(const PublicKey& key, std::chrono::sys_seconds now);

} // namespace pins
