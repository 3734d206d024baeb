#include "platform/openssl/OpenSslTrust.hpp"

#include "platform/openssl/OpenSslObjects.hpp"

#include <openssl/core_names.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>

namespace kivo::platform {
namespace {

constexpr std::size_t longestChain = 10;
// OpenSSL's answer for an authority by its basic constraints. Other answers are guesses at old certificates.
constexpr int isAuthority = 1;

bool allowsBelow(X509* authority, std::size_t authoritiesBelow) {
    const long limit = X509_get_pathlen(authority);
    return limit < 0 || authoritiesBelow <= static_cast<std::size_t>(limit);
}

bool hasIssued(X509* authority, X509* certificate) {
    return X509_check_issued(authority, certificate) == X509_V_OK && X509_check_ca(authority) == isAuthority &&
           X509_verify(certificate, X509_get0_pubkey(authority)) == 1;
}

// In seconds: the system clock's own finer unit ends in the year 2262, and certificates may be valid until 9999.
std::optional<std::chrono::sys_seconds> timeOf(const ASN1_TIME* time) {
    std::tm parts{};
    if (ASN1_TIME_to_tm(time, &parts) != 1) {
        return std::nullopt;
    }
    using namespace std::chrono;
    // Counted here, because the system's own count may have 32 bits, which end in 2038.
    const sys_days day{year{parts.tm_year + 1900} / (parts.tm_mon + 1) / parts.tm_mday};
    return sys_seconds{day} + hours{parts.tm_hour} + minutes{parts.tm_min} + seconds{parts.tm_sec};
}

bool namesHost(X509& certificate, const std::string& host) {
    return X509_check_ip_asc(&certificate, host.c_str(), 0) == 1 ||
           X509_check_host(&certificate, host.data(), host.size(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS, nullptr) == 1;
}

class OpenSslTrust final : public Trust {
public:
    std::optional<std::string> externalPublicKey(std::string_view certificate) const override {
        const OpenSslErrors errors;
        const auto parsed = certificateIn(certificate);
        const auto* const key = parsed ? X509_get0_pubkey(parsed.get()) : nullptr;
        return key != nullptr ? externalForm(*key) : std::nullopt;
    }

    std::optional<CertificateValidity> validity(std::string_view certificate, const std::string& host) const override {
        const OpenSslErrors errors;
        const auto parsed = certificateIn(certificate);
        const auto from = parsed ? timeOf(X509_get0_notBefore(parsed.get())) : std::nullopt;
        const auto until = parsed ? timeOf(X509_get0_notAfter(parsed.get())) : std::nullopt;
        if (!from || !until) {
            return std::nullopt;
        }
        return CertificateValidity{.notBefore = *from, .notAfter = *until, .namesHost = namesHost(*parsed, host)};
    }

    std::string sha256(std::string_view bytes) const override {
        std::string digest(32, '\0');
        EVP_Digest(bytes.data(), bytes.size(), reinterpret_cast<unsigned char*>(digest.data()), nullptr, EVP_sha256(),
                   nullptr);
        return digest;
    }

    std::string base64(std::string_view bytes) const override {
        // OpenSSL ends the text with a zero byte.
        std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
        const int size =
            EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                            reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        text.resize(static_cast<std::size_t>(size));
        return text;
    }
};

} // namespace

std::shared_ptr<Trust> makeOpenSslTrust() {
    return std::make_shared<OpenSslTrust>();
}

std::optional<std::string> externalForm(const EVP_PKEY& key) {
    const bool isOnCurve = EVP_PKEY_is_a(&key, "EC") == 1;
    if (!isOnCurve && EVP_PKEY_is_a(&key, "RSA") != 1) {
        return std::nullopt;
    }
    // A copy, because a certificate may carry its point compressed and shares its key with others.
    const KeyPointer copy{EVP_PKEY_dup(const_cast<EVP_PKEY*>(&key))};
    if (!copy || (isOnCurve && EVP_PKEY_set_utf8_string_param(copy.get(), OSSL_PKEY_PARAM_EC_POINT_CONVERSION_FORMAT,
                                                              "uncompressed") != 1)) {
        return std::nullopt;
    }
    auto form = derOf(copy.get(), [](EVP_PKEY* each, unsigned char** end) { return i2d_PublicKey(each, end); });
    return form.empty() ? std::nullopt : std::optional{std::move(form)};
}

std::vector<X509*> linkedChain(X509* leaf, const STACK_OF(X509) * presented) {
    // A signature that did not fit is no error of the connection.
    const OpenSslErrors errors;
    std::vector<X509*> chain{leaf};
    bool isComplete = false;
    while (!isComplete && chain.size() < longestChain) {
        isComplete = true;
        for (int i = 0; i < sk_X509_num(presented) && isComplete; ++i) {
            auto* const candidate = sk_X509_value(presented, i);
            const bool isNew =
                std::ranges::none_of(chain, [&](const X509* linked) { return X509_cmp(linked, candidate) == 0; });
            if (isNew && allowsBelow(candidate, chain.size() - 1) && hasIssued(candidate, chain.back())) {
                chain.push_back(candidate);
                isComplete = false;
            }
        }
    }
    return chain;
}

} // namespace kivo::platform
