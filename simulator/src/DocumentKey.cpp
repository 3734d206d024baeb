#include "DocumentKey.hpp"

#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/rsa.h>

#include <memory>
#include <stdexcept>

namespace kivo::simulator {
namespace {

using Envelope = std::unique_ptr<CMS_ContentInfo, Free<CMS_ContentInfo_free>>;

/// The same in every service, so that a test can name the key.
constexpr std::string_view sharedKey = "simulated-encrypt-key-of-32bytes";
constexpr std::size_t longestEnvelope = std::size_t{4} * 1024 * 1024;

Certificate certificateOf(EVP_PKEY* key) {
    Certificate certificate{X509_new()};
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    constexpr long year = 365L * 24 * 60 * 60;
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -year);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), year);
    X509_set_pubkey(certificate.get(), key);
    constexpr auto name = "Simulated document proxy";
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    if (X509_sign(certificate.get(), key, EVP_sha256()) <= 0) {
        throw std::runtime_error{"simulator: cannot make the document proxy's certificate"};
    }
    return certificate;
}

std::string derOf(X509* certificate) {
    const Memory memory{BIO_new(BIO_s_mem())};
    i2d_X509_bio(memory.get(), certificate);
    const char* bytes = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &bytes);
    return {bytes, static_cast<std::size_t>(length)};
}

} // namespace

DocumentKey::DocumentKey(DocumentEncryption kind) {
    switch (kind) {
    case DocumentEncryption::none:
        return;
    case DocumentEncryption::sharedKey:
        text_ = base64(sharedKey);
        return;
    case DocumentEncryption::rsaCertificate:
        privateKey_.reset(EVP_RSA_gen(2048));
        break;
    case DocumentEncryption::curveCertificate:
        privateKey_.reset(EVP_EC_gen("P-256"));
        break;
    }
    certificate_ = certificateOf(privateKey_.get());
    text_ = base64(derOf(certificate_.get()));
}

std::optional<std::string> DocumentKey::opened(std::string_view message) const {
    if (text_.empty() || message.size() > longestEnvelope) {
        return std::nullopt;
    }
    const auto* begin = reinterpret_cast<const unsigned char*>(message.data());
    const Envelope envelope{d2i_CMS_ContentInfo(nullptr, &begin, static_cast<long>(message.size()))};
    auto key = std::string{sharedKey};
    const bool fits =
        envelope && (privateKey_ ? CMS_decrypt_set1_pkey(envelope.get(), privateKey_.get(), certificate_.get())
                                 : CMS_decrypt_set1_key(envelope.get(), reinterpret_cast<unsigned char*>(key.data()),
                                                        key.size(), nullptr, 0)) == 1;
    const Memory plain{BIO_new(BIO_s_mem())};
    const bool isOpen = fits && CMS_decrypt(envelope.get(), nullptr, nullptr, nullptr, plain.get(), 0) == 1;
    ERR_clear_error();
    if (!isOpen) {
        return std::nullopt;
    }
    const char* bytes = nullptr;
    const long length = BIO_get_mem_data(plain.get(), &bytes);
    return std::string{bytes, static_cast<std::size_t>(length)};
}

} // namespace kivo::simulator
