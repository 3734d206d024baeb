#include "reader/DocumentAuthority.hpp"

#include "tlv/Tlv.hpp"

#include <openssl/cms.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace kivo::reader {
namespace {

template <class T>
T* made(T* object) {
    if (object == nullptr) {
        throw std::runtime_error{"OpenSSL failed"};
    }
    return object;
}

template <class T, class Encode>
Bytes encoded(T* object, Encode encode) {
    Bytes der(static_cast<std::size_t>(encode(object, nullptr)));
    auto* end = der.data();
    encode(object, &end);
    return der;
}

std::shared_ptr<EVP_PKEY> madeKey(const std::string& kind) {
    if (kind == "rsa") {
        return {made(EVP_RSA_gen(2048)), EVP_PKEY_free};
    }
    const std::shared_ptr<EVP_PKEY_CTX> context{EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr), EVP_PKEY_CTX_free};
    EVP_PKEY_keygen_init(context.get());
    const auto curve = kind.substr(0, kind.find(' '));
    EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), OBJ_txt2nid(curve.c_str()));
    EVP_PKEY_CTX_set_ec_param_enc(context.get(), kind.ends_with("explicit") ? 0 : OPENSSL_EC_NAMED_CURVE);
    EVP_PKEY* key = nullptr;
    EVP_PKEY_keygen(context.get(), &key);
    return {made(key), EVP_PKEY_free};
}

void setTime(ASN1_TIME* to, Time time) {
    made(ASN1_TIME_set(to, std::chrono::system_clock::to_time_t(time)));
}

void addExtension(X509* certificate, int kind, const char* value) {
    const std::shared_ptr<X509_EXTENSION> extension{made(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value)),
                                                    X509_EXTENSION_free};
    X509_add_ext(certificate, extension.get(), -1);
}

// SHA-1 as the standards write it, with parameters of nothing.
Bytes algorithm(const std::string& digest) {
    const std::shared_ptr<ASN1_OBJECT> name{made(OBJ_txt2obj(digest.c_str(), 0)), ASN1_OBJECT_free};
    auto content = encoded(name.get(), i2d_ASN1_OBJECT);
    content.insert(content.end(), {0x05, 0x00});
    return encodedTlv(0x30, content);
}

} // namespace

Bytes Identity::der() const {
    return encoded(certificate.get(), i2d_X509);
}

std::string Identity::pem() const {
    const std::shared_ptr<BIO> memory{BIO_new(BIO_s_mem()), BIO_free_all};
    PEM_write_bio_X509(memory.get(), certificate.get());
    char* text = nullptr;
    const auto size = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

Identity makeIdentity(const IdentityFacts& facts, const Identity* issuer) {
    static long serial = 1000;
    Identity identity{.certificate = {made(X509_new()), X509_free}, .key = madeKey(facts.key)};
    auto* const certificate = identity.certificate.get();
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++serial);
    setTime(X509_getm_notBefore(certificate), facts.from);
    setTime(X509_getm_notAfter(certificate), facts.to);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(facts.name.c_str()), -1, -1, 0);
    const auto& signer = issuer == nullptr ? identity : *issuer;
    X509_set_issuer_name(certificate, X509_get_subject_name(signer.certificate.get()));
    X509_set_pubkey(certificate, identity.key.get());
    addExtension(certificate, NID_basic_constraints, facts.isAuthority ? "critical,CA:TRUE" : "CA:FALSE");
    addExtension(certificate, NID_key_usage, facts.isAuthority ? "critical,keyCertSign,cRLSign" : "digitalSignature");
    X509_sign(certificate, signer.key.get(), EVP_sha256());
    return identity;
}

Bytes signedMessage(const Identity& signer, const Bytes& content, const MessageFacts& facts) {
    unsigned flags = CMS_PARTIAL | CMS_BINARY;
    const std::shared_ptr<CMS_ContentInfo> message{CMS_sign(nullptr, nullptr, nullptr, nullptr, flags),
                                                   CMS_ContentInfo_free};
    const std::shared_ptr<ASN1_OBJECT> type{made(OBJ_txt2obj(facts.contentType.c_str(), 1)), ASN1_OBJECT_free};
    CMS_set1_eContentType(message.get(), type.get());
    flags |= (facts.isPss ? CMS_KEY_PARAM : 0U) | (facts.hasCertificate ? 0U : CMS_NOCERTS) |
             (facts.signingTime ? CMS_NOSMIMECAP : CMS_NOATTR);
    auto* const info = made(CMS_add1_signer(message.get(), signer.certificate.get(), signer.key.get(),
                                            EVP_get_digestbyname(facts.digest.c_str()), flags));
    if (facts.isPss) {
        EVP_PKEY_CTX_set_rsa_padding(CMS_SignerInfo_get0_pkey_ctx(info), RSA_PKCS1_PSS_PADDING);
    }
    if (facts.signingTime) {
        const std::shared_ptr<ASN1_TIME> time{
            ASN1_TIME_set(nullptr, std::chrono::system_clock::to_time_t(*facts.signingTime)), ASN1_STRING_free};
        CMS_signed_add1_attr_by_NID(info, NID_pkcs9_signingTime, time->type, time.get(), -1);
    }
    const std::shared_ptr<BIO> data{BIO_new_mem_buf(content.data(), static_cast<int>(content.size())), BIO_free_all};
    if (CMS_final(message.get(), data.get(), nullptr, flags) != 1) {
        throw std::runtime_error{"OpenSSL has not signed"};
    }
    return encoded(message.get(), i2d_CMS_ContentInfo);
}

Bytes revocationList(const Identity& issuer, const std::vector<Identity>& revoked) {
    const std::shared_ptr<X509_CRL> list{X509_CRL_new(), X509_CRL_free};
    const std::shared_ptr<ASN1_TIME> time{X509_gmtime_adj(nullptr, 0), ASN1_STRING_free};
    X509_CRL_set_version(list.get(), X509_CRL_VERSION_2);
    X509_CRL_set_issuer_name(list.get(), X509_get_subject_name(issuer.certificate.get()));
    X509_CRL_set1_lastUpdate(list.get(), time.get());
    X509_CRL_set1_nextUpdate(list.get(), time.get());
    for (const auto& each : revoked) {
        auto* const entry = X509_REVOKED_new();
        X509_REVOKED_set_serialNumber(entry, X509_get_serialNumber(each.certificate.get()));
        X509_REVOKED_set_revocationDate(entry, time.get());
        X509_CRL_add0_revoked(list.get(), entry);
    }
    X509_CRL_sort(list.get());
    X509_CRL_sign(list.get(), issuer.key.get(), EVP_sha256());
    return encoded(list.get(), i2d_X509_CRL);
}

Bytes securityObject(const std::map<int, Bytes>& groups, const std::string& digest, int version) {
    Bytes digests;
    for (const auto& [number, file] : groups) {
        Bytes value(EVP_MAX_MD_SIZE);
        unsigned size = 0;
        EVP_Digest(file.data(), file.size(), value.data(), &size, EVP_get_digestbyname(digest.c_str()), nullptr);
        value.resize(size);
        auto entry = encodedTlv(0x02, Bytes{static_cast<std::uint8_t>(number)});
        const auto octets = encodedTlv(0x04, value);
        entry.insert(entry.end(), octets.begin(), octets.end());
        const auto whole = encodedTlv(0x30, entry);
        digests.insert(digests.end(), whole.begin(), whole.end());
    }
    auto content = encodedTlv(0x02, Bytes{static_cast<std::uint8_t>(version)});
    std::vector<Bytes> parts{algorithm(digest), encodedTlv(0x30, digests)};
    if (version > 0) {
        parts.push_back({0x30, 0x0E, 0x13, 4, '0', '1', '0', '8', 0x13, 6, '0', '4', '0', '0', '0', '0'});
    }
    for (const auto& part : parts) {
        content.insert(content.end(), part.begin(), part.end());
    }
    return encodedTlv(0x30, content);
}

Bytes masterListContent(const std::vector<Identity>& authorities) {
    Bytes set;
    for (const auto& authority : authorities) {
        const auto der = authority.der();
        set.insert(set.end(), der.begin(), der.end());
    }
    auto content = encodedTlv(0x02, Bytes{0});
    const auto whole = encodedTlv(0x31, set);
    content.insert(content.end(), whole.begin(), whole.end());
    return encodedTlv(0x30, content);
}

} // namespace kivo::reader
