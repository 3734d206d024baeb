#pragma once

#include <kivo/Export.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The period and the host for which a certificate was issued.
struct CertificateValidity {
    /// The time in which the certificate is valid.
    std::chrono::sys_seconds notBefore;
    std::chrono::sys_seconds notAfter;
    /// Whether the certificate names the host in question, by name or numeric address.
    bool namesHost = false;
};

/// The cryptography that pinning rests on. Certificates are given in DER form. Callable from any thread.
class KIVO_EXPORT Trust {
public:
    virtual ~Trust() = default;

    /// The certificate's public key in its external form: for RSA the PKCS#1 RSAPublicKey (RFC 8017), for an elliptic
    /// curve the uncompressed point (X9.63). Absent for any other key, and when the certificate cannot be read.
    virtual std::optional<std::string> externalPublicKey(std::string_view certificate) const = 0;

    /// Absent when the certificate cannot be read.
    virtual std::optional<CertificateValidity> validity(std::string_view certificate,
                                                        const std::string& host) const = 0;

    /// The 32 bytes of the digest.
    virtual std::string sha256(std::string_view bytes) const = 0;

    /// Standard base64 (RFC 4648) with padding and without line breaks.
    virtual std::string base64(std::string_view bytes) const = 0;
};

} // namespace kivo::platform
