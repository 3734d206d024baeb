#include "passport/Issuing.hpp"
#include "passport/KeyAgreement.hpp"
#include "passport/Numbers.hpp"

#include <kivo/simulator/CountryAuthority.hpp>

#include <openssl/core_names.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace kivo::simulator {
namespace chip {
namespace {

using Extension = std::unique_ptr<X509_EXTENSION, Free<X509_EXTENSION_free>>;
using RevocationList = std::unique_ptr<X509_CRL, Free<X509_CRL_free>>;
using Time = std::unique_ptr<ASN1_TIME, Free<ASN1_TIME_free>>;
using Integer = std::unique_ptr<ASN1_INTEGER, Free<ASN1_INTEGER_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, Free<EVP_MD_CTX_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, Free<OSSL_PARAM_free>>;
using ParameterBuilder = std::unique_ptr<OSSL_PARAM_BLD, Free<OSSL_PARAM_BLD_free>>;
using KeyMaker = std::unique_ptr<EVP_PKEY_CTX, Free<EVP_PKEY_CTX_free>>;

constexpr long oneDay = 24L * 60 * 60;
constexpr int rsaBits = 2048;
constexpr int curve = 12; // P-256

// The serial numbers. The revoked one is on every revocation list.
constexpr long authoritySerial = 1;
constexpr long revokedSerial = 7;
constexpr long listSignerSerial = 9;

void demand(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error{std::string{"simulator: cannot make "} + what};
    }
}

/// The key on a curve that belongs to a text.
Key keyFrom(std::string_view text) {
    const auto secret = digest(HashFunction::sha256, viewOf(text));
    const auto agreement = KeyAgreement::make(curve);
    const auto publicKey = agreement->multiple(agreement->generator(), secret).value();
    const auto number = numberIn(secret);
    const ParameterBuilder builder{OSSL_PARAM_BLD_new()};
    OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, "P-256", 0);
    OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, number.get());
    OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, publicKey.data(), publicKey.size());
    const Parameters parameters{OSSL_PARAM_BLD_to_param(builder.get())};
    const KeyMaker maker{EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr)};
    EVP_PKEY* key = nullptr;
    demand(EVP_PKEY_fromdata_init(maker.get()) == 1 &&
               EVP_PKEY_fromdata(maker.get(), &key, EVP_PKEY_KEYPAIR, parameters.get()) == 1,
           "an authority's key");
    return Key{key};
}

Key keyOf(SignatureScheme scheme, const std::string& seed) {
    Key key = scheme != SignatureScheme::ecdsa ? Key{EVP_RSA_gen(rsaBits)}
              : seed.empty()                   ? Key{EVP_EC_gen("P-256")}
                                               : keyFrom(seed);
    demand(key != nullptr, "a key");
    return key;
}

/// Adds an extension with the value in OpenSSL's notation, to a certificate or a revocation list.
template <class Signed, class Add>
void extend(Signed* target, X509* issuer, X509* subject, X509_CRL* list, int kind, const char* value, Add add) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, subject, nullptr, list, 0);
    const Extension extension{X509V3_EXT_conf_nid(nullptr, &context, kind, value)};
    demand(extension && add(target, extension.get(), -1) == 1, "an extension");
}

void extend(X509* certificate, X509* issuer, int kind, const char* value) {
    extend(certificate, issuer, certificate, nullptr, kind, value, X509_add_ext);
}

/// Signs with the authority's key in its scheme.
template <class Signed, class Sign>
void signWith(EVP_PKEY* key, SignatureScheme scheme, Signed* target, Sign sign) {
    const DigestContext context{EVP_MD_CTX_new()};
    EVP_PKEY_CTX* keyContext = nullptr;
    demand(EVP_DigestSignInit(context.get(), &keyContext, EVP_sha256(), nullptr, key) == 1 &&
               (scheme != SignatureScheme::rsaPss ||
                (EVP_PKEY_CTX_set_rsa_padding(keyContext, RSA_PKCS1_PSS_PADDING) == 1 &&
                 EVP_PKEY_CTX_set_rsa_pss_saltlen(keyContext, RSA_PSS_SALTLEN_DIGEST) == 1)) &&
               sign(target, context.get()) > 0,
           "a signature");
}

/// A certificate with the name in the country, without dates, extensions or signature.
Certificate blank(const std::string& country, const std::string& name, EVP_PKEY* key, long serial) {
    Certificate certificate{X509_new()};
    demand(certificate != nullptr, "a certificate");
    X509_set_version(certificate.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
    X509_set_pubkey(certificate.get(), key);
    const auto entry = [&](const char* field, const std::string& text, int type) {
        X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), field, type,
                                   reinterpret_cast<const unsigned char*>(text.c_str()), -1, -1, 0);
    };
    entry("C", country, V_ASN1_PRINTABLESTRING);
    entry("O", "Simulated passports of Kivo", V_ASN1_UTF8STRING);
    entry("CN", name, V_ASN1_UTF8STRING);
    return certificate;
}

void setDates(X509* certificate, const char* from, const char* until) {
    ASN1_TIME_set_string_X509(X509_getm_notBefore(certificate), from);
    ASN1_TIME_set_string_X509(X509_getm_notAfter(certificate), until);
}

void setDates(X509* certificate, long daysFrom, long daysUntil) {
    X509_time_adj_ex(X509_getm_notBefore(certificate), static_cast<int>(daysFrom), 0, nullptr);
    X509_time_adj_ex(X509_getm_notAfter(certificate), static_cast<int>(daysUntil), 0, nullptr);
}

Certificate makeAuthorityCertificate(const CountryAuthority::Keys& keys) {
    auto certificate = blank(keys.country, "Country signing authority", keys.key.get(), authoritySerial);
    setDates(certificate.get(), "20200101000000Z", "21200101000000Z");
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    extend(certificate.get(), certificate.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
    extend(certificate.get(), certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
    extend(certificate.get(), certificate.get(), NID_subject_key_identifier, "hash");
    extend(certificate.get(), certificate.get(), NID_authority_key_identifier, "keyid:always");
    signWith(keys.key.get(), keys.scheme, certificate.get(), X509_sign_ctx);
    return certificate;
}

/// Issues what `blank` has begun.
void issue(const CountryAuthority::Keys& authority, X509* certificate) {
    X509_set_issuer_name(certificate, X509_get_subject_name(authority.certificate.get()));
    extend(certificate, authority.certificate.get(), NID_authority_key_identifier, "keyid:always");
    extend(certificate, authority.certificate.get(), NID_subject_key_identifier, "hash");
    extend(certificate, authority.certificate.get(), NID_key_usage, "critical,digitalSignature");
    signWith(authority.key.get(), authority.scheme, certificate, X509_sign_ctx);
}

template <class Value, class Encode>
Bytes der(Value* value, Encode encode) {
    unsigned char* bytes = nullptr;
    const int length = encode(value, &bytes);
    const std::unique_ptr<unsigned char, Free<freeMemory>> owned{bytes};
    demand(length > 0, "an encoding");
    return {bytes, bytes + length};
}

void write(const std::filesystem::path& file, View bytes) {
    std::ofstream stream{file, std::ios::binary};
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) {
        throw std::filesystem::filesystem_error{"cannot write", file, std::make_error_code(std::errc::io_error)};
    }
}

} // namespace

DocumentSigner makeSigner(const CountryAuthority& authority, SignatureScheme scheme, SignerState state) {
    auto key = keyOf(scheme, "");
    const auto chance = randomBytes({}, 3);
    const auto serial =
        state == SignerState::revoked ? revokedSerial : 1000L + (chance[0] << 16U | chance[1] << 8U | chance[2]);
    auto certificate = blank(authority.country(), "Document signer", key.get(), serial);
    if (state == SignerState::expired) {
        setDates(certificate.get(), "20200201000000Z", "20200501000000Z");
    } else {
        setDates(certificate.get(), -30, 10 * 365L);
    }
    issue(authority.keys(), certificate.get());
    return {.key = std::move(key), .certificate = std::move(certificate), .scheme = scheme};
}

} // namespace chip

CountryAuthority::CountryAuthority(std::string country, SignatureScheme scheme) {
    auto keys = std::make_unique<Keys>();
    keys->key = chip::keyOf(scheme, "kivo simulated country signing authority " + country);
    keys->country = std::move(country);
    keys->scheme = scheme;
    keys->certificate = chip::makeAuthorityCertificate(*keys);
    keys_ = std::move(keys);
}

CountryAuthority::~CountryAuthority() = default;

const std::string& CountryAuthority::country() const {
    return keys_->country;
}

const CountryAuthority::Keys& CountryAuthority::keys() const {
    return *keys_;
}

Bytes CountryAuthority::certificate() const {
    return chip::der(keys_->certificate.get(), i2d_X509);
}

Bytes CountryAuthority::revocationList() const {
    using namespace chip;
    const RevocationList list{X509_CRL_new()};
    X509_CRL_set_version(list.get(), 1);
    X509_CRL_set_issuer_name(list.get(), X509_get_subject_name(keys_->certificate.get()));
    const Time yesterday{X509_gmtime_adj(nullptr, -oneDay)};
    const Time later{X509_gmtime_adj(nullptr, 90 * oneDay)};
    X509_CRL_set1_lastUpdate(list.get(), yesterday.get());
    X509_CRL_set1_nextUpdate(list.get(), later.get());
    const Integer serial{ASN1_INTEGER_new()};
    ASN1_INTEGER_set(serial.get(), revokedSerial);
    auto* const entry = X509_REVOKED_new();
    X509_REVOKED_set_serialNumber(entry, serial.get());
    X509_REVOKED_set_revocationDate(entry, yesterday.get());
    X509_CRL_add0_revoked(list.get(), entry);
    extend(list.get(), keys_->certificate.get(), nullptr, list.get(), NID_authority_key_identifier, "keyid:always",
           X509_CRL_add_ext);
    const Integer number{ASN1_INTEGER_new()};
    ASN1_INTEGER_set(number.get(), 1);
    X509_CRL_add1_ext_i2d(list.get(), NID_crl_number, number.get(), 0, 0);
    signWith(keys_->key.get(), keys_->scheme, list.get(), X509_CRL_sign_ctx);
    return der(list.get(), i2d_X509_CRL);
}

Bytes CountryAuthority::masterList() const {
    using namespace chip;
    DocumentSigner signer{
        .key = keyOf(SignatureScheme::ecdsa, ""), .certificate = {}, .scheme = SignatureScheme::ecdsa};
    signer.certificate = blank(keys_->country, "Master list signer", signer.key.get(), listSignerSerial);
    setDates(signer.certificate.get(), -30, 10 * 365L);
    extend(signer.certificate.get(), keys_->certificate.get(), NID_ext_key_usage, "critical,2.23.136.1.1.3");
    issue(*keys_, signer.certificate.get());
    const auto list = object(0x30, joined({object(0x02, Bytes{0}), object(0x31, certificate())}));
    return signedContent(signer, HashFunction::sha256, "2.23.136.1.1.2", list);
}

void CountryAuthority::save(const std::filesystem::path& folder) const {
    std::filesystem::create_directory(folder);
    chip::write(folder / (country() + ".cer"), certificate());
    chip::write(folder / (country() + ".crl"), revocationList());
    chip::write(folder / (country() + ".ml"), masterList());
}

} // namespace kivo::simulator
