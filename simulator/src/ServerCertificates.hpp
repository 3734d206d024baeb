#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>

#include <openssl/ssl.h>

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string_view>

namespace kivo::simulator {

/// The certificates that a server presents, sound or flawed. Each is made at its first use.
class ServerCertificates {
public:
    /// Chooses the flaw of the certificate for a host.
    using Choice = std::function<CertificateFlaw(std::string_view host)>;

    explicit ServerCertificates(KeyType keyType);
    ServerCertificates(const ServerCertificates&) = delete;
    ServerCertificates& operator=(const ServerCertificates&) = delete;
    ~ServerCertificates();

    /// The authority's root as a PEM file.
    std::filesystem::path trustFile() const { return folder_ / "root.pem"; }

    /// Makes every handshake of `context` present the certificate with the flaw that `choice` returns.
    void use(SSL_CTX* context, Choice choice);

    /// The certificate with a flaw; the same certificate at every call.
    const IssuedCertificate& withFlaw(CertificateFlaw flaw);

private:
    static int onCertificateWanted(SSL* ssl, void* self);

    const KeyType keyType_;
    const std::filesystem::path folder_;
    const CertificateAuthority authority_;
    Choice choice_;
    std::mutex mutex_;
    std::map<CertificateFlaw, IssuedCertificate> issued_;
};

} // namespace kivo::simulator
