#include "ServerCertificates.hpp"

#include "Cryptography.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <openssl/err.h>
#include <openssl/pem.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace kivo::simulator {
namespace {

std::filesystem::path privateFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "kivo-service-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error{"simulator: cannot make a folder " + pattern};
    }
    return pattern;
}

Memory reading(const std::string& text) {
    return Memory{BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))};
}

void present(SSL* ssl, const IssuedCertificate& certificate) {
    const auto keyText = reading(certificate.privateKey);
    const Key key{PEM_read_bio_PrivateKey(keyText.get(), nullptr, nullptr, nullptr)};
    const auto chainText = reading(certificate.chain);
    const auto next = [&] { return Certificate{PEM_read_bio_X509(chainText.get(), nullptr, nullptr, nullptr)}; };
    SSL_use_certificate(ssl, next().get());
    SSL_use_PrivateKey(ssl, key.get());
    SSL_clear_chain_certs(ssl);
    for (auto above = next(); above; above = next()) {
        SSL_add1_chain_cert(ssl, above.get());
    }
    ERR_clear_error();
}

} // namespace

ServerCertificates::ServerCertificates(KeyType keyType)
    : keyType_{keyType}
    , folder_{privateFolder()} {
    std::ofstream{trustFile()} << authority_.root();
    withFlaw(CertificateFlaw::none);
}

ServerCertificates::~ServerCertificates() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void ServerCertificates::use(SSL_CTX* context, Choice choice) {
    choice_ = std::move(choice);
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    // A resumed session would show no certificate and hide a flaw.
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context, SSL_OP_NO_TICKET);
    SSL_CTX_set_num_tickets(context, 0);
    SSL_CTX_set_cert_cb(context, onCertificateWanted, this);
}

int ServerCertificates::onCertificateWanted(SSL* ssl, void* self) {
    auto& own = *static_cast<ServerCertificates*>(self);
    const char* host = SSL_get_servername(ssl, TLSEXT_NAMETYPE_host_name);
    present(ssl, own.withFlaw(own.choice_(host != nullptr ? host : "")));
    return 1;
}

const IssuedCertificate& ServerCertificates::withFlaw(CertificateFlaw flaw) {
    const std::scoped_lock lock{mutex_};
    const auto [entry, isNew] = issued_.try_emplace(flaw);
    if (isNew) {
        CertificateRequest request;
        request.keyType = keyType_;
        request.flaw = flaw;
        for (const auto endpoint : allEndpoints) {
            request.names.push_back(std::string{name(endpoint)} + ".localhost");
        }
        entry->second = authority_.issue(request);
    }
    return entry->second;
}

} // namespace kivo::simulator
