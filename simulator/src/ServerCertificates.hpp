#pragma once

#include <kivo/simulator/CertificateAuthority.hpp>

#include <openssl/ssl.h>

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string_view>

namespace kivo::simulator {

/// The certificates a server presents, sound or flawed, made when first wanted.
class ServerCertificates {
public:
    /// Says which flaw the certificate for a host is to have.
    using Choice = std::function<CertificateFlaw(std::string_view host)>;

    explicit ServerCertificates(KeyType keyType);
    ServerCertificates(const ServerCertificates&) = delete;
    ServerCertificates& operator=(const ServerCertificates&) = delete;
    ~ServerCertificates();

    /// The authority's root as a PEM file.
    std::filesystem::path trustFile() const { return folder_ / "root.pem"; }

    /// Has every handshake of `context` present the certificate that `choice` asks for.
    void use(SSL_CTX* context, Choice choice);

    /// The certificate for a flaw, the same one every time.
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
