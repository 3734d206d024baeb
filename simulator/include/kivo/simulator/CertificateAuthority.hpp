#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The key of a server's certificate.
enum class KeyType { rsa2048, rsa4096, ec256 };

/// What can be wrong with a server's certificate.
enum class CertificateFlaw {
    none,
    expired,
    wrongHost,
    selfSigned,
    untrustedAuthority, ///< Well made, but by another authority.
};

/// What a certificate is wanted for.
struct CertificateRequest {
    /// Host names and numeric addresses, the first of them also the common name.
    std::vector<std::string> names{"localhost", "*.localhost", "127.0.0.1", "::1"};
    KeyType keyType = KeyType::rsa2048;
    CertificateFlaw flaw = CertificateFlaw::none;
};

/// What a host lists to pin a server: one of the two is enough.
struct CertificatePins {
    std::string leaf;
    /// Empty for a certificate signed by itself.
    std::string intermediate;
};

/// A certificate with its private key, as PEM text.
struct IssuedCertificate {
    /// The leaf, then the intermediate that signed it.
    std::string chain;
    std::string privateKey;
    CertificatePins pins;
};

/// A certificate authority of its own, made afresh each time: a root, an intermediate, and what they issue.
class CertificateAuthority {
public:
    CertificateAuthority();
    CertificateAuthority(const CertificateAuthority&) = delete;
    CertificateAuthority& operator=(const CertificateAuthority&) = delete;
    ~CertificateAuthority();

    /// The root certificate as PEM text, for a client's list of trusted ones.
    std::string root() const;

    /// Issues a certificate. Takes some tens of milliseconds for an RSA key. Callable from any thread.
    IssuedCertificate issue(const CertificateRequest& request) const;

private:
    struct Chain;

    std::unique_ptr<Chain> chain_;
};

} // namespace kivo::simulator
