#pragma once

#include <memory>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The key of a server's certificate.
enum class KeyType { rsa2048, rsa4096, ec256 };

/// The flaws that a server's certificate can have.
enum class CertificateFlaw {
    none,
    expired,
    notYetValid,
    wrongHost,
    selfSigned,
    untrustedAuthority, ///< Without a flaw of its own, but issued by another authority.
};

/// The properties of a certificate to issue.
struct CertificateRequest {
    /// Host names and numeric addresses. The first entry is also the common name.
    std::vector<std::string> names{"localhost", "*.localhost", "127.0.0.1", "::1"};
    /// The kind of the leaf's key, and the fault that the certificate is to have.
    KeyType keyType = KeyType::rsa2048;
    CertificateFlaw flaw = CertificateFlaw::none;
};

/// The pins of a certificate. A host that lists either of them pins the server.
struct CertificatePins {
    /// The pins as a host lists them, in Base64.
    std::string leaf;
    /// Empty for a self-signed certificate.
    std::string intermediate;
};

/// A certificate with its private key, as PEM text.
struct IssuedCertificate {
    /// The leaf, then the intermediate that signed it.
    std::string chain;
    std::string privateKey;
    CertificatePins pins;
};

/// A certificate authority with new keys: a root and an intermediate, which signs the certificates.
class CertificateAuthority {
public:
    CertificateAuthority();
    CertificateAuthority(const CertificateAuthority&) = delete;
    CertificateAuthority& operator=(const CertificateAuthority&) = delete;
    ~CertificateAuthority();

    /// The root certificate as PEM text, for a client's list of trusted certificates.
    std::string root() const;

    /// Issues a certificate. Takes some tens of milliseconds for an RSA key. Callable from any thread.
    IssuedCertificate issue(const CertificateRequest& request) const;

private:
    struct Chain;

    std::unique_ptr<Chain> chain_;
};

} // namespace kivo::simulator
