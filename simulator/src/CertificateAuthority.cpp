#include "Cryptography.hpp"

#include <kivo/simulator/CertificateAuthority.hpp>

#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace kivo::simulator {
namespace {

using Extension = std::unique_ptr<X509_EXTENSION, Free<X509_EXTENSION_free>>;

constexpr long day = 24L * 60 * 60;
/// Of every certificate, so that a service can run for months.
constexpr long lifetime = 365 * day;

void require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error{std::string{"simulator: cannot make "} + what};
    }
}

Key makeKey(KeyType type) {
    Key key;
    switch (type) {
    case KeyType::rsa2048:
        key.reset(EVP_RSA_gen(2048));
        break;
    case KeyType::rsa4096:
        key.reset(EVP_RSA_gen(4096));
        break;
    case KeyType::ec256:
        key.reset(EVP_EC_gen("P-256"));
        break;
    }
    require(key != nullptr, "a key");
    return key;
}

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension{X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str())};
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, "a certificate's extension");
}

/// A certificate without extensions or signature.
Certificate draft(const std::string& commonName, EVP_PKEY* key, long fromNow, long untilNow) {
    Certificate certificate{X509_new()};
    require(certificate != nullptr, "a certificate");
    X509_set_version(certificate.get(), 2);
    std::uint64_t serial = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), serial >> 1U);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), fromNow);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), untilNow);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0);
    return certificate;
}

void sign(X509* certificate, X509* issuer, EVP_PKEY* issuerKey) {
    X509_set_issuer_name(certificate, X509_get_subject_name(issuer));
    addExtension(certificate, issuer, NID_authority_key_identifier, "keyid:always");
    require(X509_sign(certificate, issuerKey, EVP_sha256()) > 0, "a certificate's signature");
}

Certificate makeAuthority(const std::string& commonName, EVP_PKEY* key, X509* issuer, EVP_PKEY* issuerKey) {
    auto certificate = draft(commonName, key, -day, lifetime);
    auto* const signer = issuer != nullptr ? issuer : certificate.get();
    addExtension(certificate.get(), signer, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), signer, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(certificate.get(), signer, NID_subject_key_identifier, "hash");
    sign(certificate.get(), signer, issuerKey != nullptr ? issuerKey : key);
    return certificate;
}

std::string alternativeNames(const std::vector<std::string>& names) {
    std::string list;
    for (const auto& each : names) {
        const bool numeric = each.contains(':') || each.find_first_not_of("0123456789.") == std::string::npos;
        list.append(list.empty() ? "" : ",").append(numeric ? "IP:" : "DNS:").append(each);
    }
    return list;
}

template <class Write>
std::string pem(const Write& write) {
    const Memory memory{BIO_new(BIO_s_mem())};
    write(memory.get());
    const char* text = nullptr;
    const long length = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(length)};
}

std::string pemOf(X509* certificate) {
    return pem([&](BIO* memory) { PEM_write_bio_X509(memory, certificate); });
}

std::string pemOf(EVP_PKEY* key) {
    return pem([&](BIO* memory) { PEM_write_bio_PrivateKey(memory, key, nullptr, nullptr, 0, nullptr, nullptr); });
}

} // namespace

struct CertificateAuthority::Chain {
    // The authorities' keys are on a curve because such keys are made quickly. Only the leaf's key type matters to a
    // test.
    Key rootKey = makeKey(KeyType::ec256);
    Certificate root = makeAuthority("Kivo simulated root", rootKey.get(), nullptr, nullptr);
    Key intermediateKey = makeKey(KeyType::ec256);
    Certificate intermediate =
        makeAuthority("Kivo simulated intermediate", intermediateKey.get(), root.get(), rootKey.get());
};

CertificateAuthority::CertificateAuthority()
    : chain_{std::make_unique<Chain>()} {}

CertificateAuthority::~CertificateAuthority() = default;

std::string CertificateAuthority::root() const {
    return pemOf(chain_->root.get());
}

IssuedCertificate CertificateAuthority::issue(const CertificateRequest& request) const {
    if (request.flaw == CertificateFlaw::untrustedAuthority) {
        auto sound = request;
        sound.flaw = CertificateFlaw::none;
        return CertificateAuthority{}.issue(sound);
    }
    const long validFrom = request.flaw == CertificateFlaw::expired       ? -30 * day
                           : request.flaw == CertificateFlaw::notYetValid ? day
                                                                          : -day;
    const long validUntil = request.flaw == CertificateFlaw::expired ? -day : lifetime;
    const bool selfSigned = request.flaw == CertificateFlaw::selfSigned;
    const auto names =
        request.flaw == CertificateFlaw::wrongHost ? std::vector<std::string>{"elsewhere.example"} : request.names;
    const auto key = makeKey(request.keyType);
    const auto leaf = draft(names.at(0), key.get(), validFrom, validUntil);
    auto* const issuer = selfSigned ? leaf.get() : chain_->intermediate.get();
    addExtension(leaf.get(), issuer, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(leaf.get(), issuer, NID_ext_key_usage, "serverAuth");
    addExtension(leaf.get(), issuer, NID_subject_alt_name, alternativeNames(names));
    addExtension(leaf.get(), issuer, NID_subject_key_identifier, "hash");
    sign(leaf.get(), issuer, selfSigned ? key.get() : chain_->intermediateKey.get());
    return {.chain = pemOf(leaf.get()) + (selfSigned ? "" : pemOf(chain_->intermediate.get())),
            .privateKey = pemOf(key.get()),
            .pins = {.leaf = publicKeyPin(leaf.get()),
                     .intermediate = selfSigned ? "" : publicKeyPin(chain_->intermediate.get())}};
}

} // namespace kivo::simulator
