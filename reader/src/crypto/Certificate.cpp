#include "crypto/Certificate.hpp"

#include "crypto/CertificateObjects.hpp"

#include <openssl/pem.h>
#include <openssl/pemerr.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace kivo::reader {
namespace {

constexpr std::size_t largestCertificate = std::size_t{1} << 16;

bool isBefore(const ASN1_TIME* time, std::time_t than) {
    return X509_cmp_time(time, &than) < 0;
}

bool isAfter(const ASN1_TIME* time, std::time_t than) {
    return X509_cmp_time(time, &than) > 0;
}

struct PemParts {
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long size = 0;

    PemParts() = default;
    PemParts(const PemParts&) = delete;
    PemParts& operator=(const PemParts&) = delete;

    ~PemParts() {
        OPENSSL_free(name);
        OPENSSL_free(header);
        OPENSSL_free(data);
    }
};

} // namespace

Certificate::Certificate(std::shared_ptr<x509_st> certificate)
    : held(std::move(certificate)) {}

std::optional<Certificate> Certificate::read(ByteView der) {
    const x509::Errors errors;
    if (der.size() > largestCertificate) {
        return std::nullopt;
    }
    const auto* at = der.data();
    const std::shared_ptr<X509> certificate{d2i_X509(nullptr, &at, static_cast<long>(der.size())), X509_free};
    if (!certificate || at != der.data() + der.size()) {
        return std::nullopt;
    }
    return Certificate{certificate};
}

bool Certificate::isAuthority() const {
    const x509::Errors errors;
    return X509_check_ca(held.get()) != 0;
}

bool Certificate::isRoot() const {
    return isIssuedBy(*this);
}

bool Certificate::isIssuedBy(const Certificate& authority) const {
    const x509::Errors errors;
    if (X509_NAME_cmp(X509_get_issuer_name(held.get()), X509_get_subject_name(authority.held.get())) != 0) {
        return false;
    }
    auto* key = X509_get0_pubkey(authority.held.get());
    return key != nullptr && X509_verify(held.get(), key) == 1;
}

bool Certificate::isValidAt(std::chrono::system_clock::time_point time) const {
    const x509::Errors errors;
    const auto seconds = std::chrono::system_clock::to_time_t(time);
    return isBefore(X509_get0_notBefore(held.get()), seconds) && isAfter(X509_get0_notAfter(held.get()), seconds);
}

bool Certificate::operator==(const Certificate& other) const {
    return X509_cmp(held.get(), other.held.get()) == 0;
}

RevocationList::RevocationList(std::shared_ptr<X509_crl_st> list)
    : held(std::move(list)) {}

std::optional<RevocationList> RevocationList::read(ByteView der) {
    const x509::Errors errors;
    const auto* at = der.data();
    const std::shared_ptr<X509_CRL> list{d2i_X509_CRL(nullptr, &at, static_cast<long>(der.size())), X509_CRL_free};
    if (!list || at != der.data() + der.size()) {
        return std::nullopt;
    }
    return RevocationList{list};
}

bool RevocationList::isIssuedBy(const Certificate& authority) const {
    const x509::Errors errors;
    if (X509_NAME_cmp(X509_CRL_get_issuer(held.get()), X509_get_subject_name(authority.native())) != 0) {
        return false;
    }
    auto* key = X509_get0_pubkey(authority.native());
    return key != nullptr && X509_CRL_verify(held.get(), key) == 1;
}

bool RevocationList::names(const Certificate& certificate) const {
    X509_REVOKED* entry = nullptr;
    return X509_CRL_get0_by_serial(held.get(), &entry, X509_get0_serialNumber(certificate.native())) == 1;
}

std::optional<std::vector<Bytes>> derObjectsIn(ByteView file, std::size_t most) {
    const x509::Errors errors;
    const std::string_view text{reinterpret_cast<const char*>(file.data()), file.size()};
    if (!text.contains("-----BEGIN ")) {
        return std::vector<Bytes>{{file.begin(), file.end()}};
    }
    const x509::Stream stream{BIO_new_mem_buf(file.data(), static_cast<int>(file.size()))};
    std::vector<Bytes> objects;
    while (objects.size() <= most) {
        PemParts parts;
        if (PEM_read_bio(stream.get(), &parts.name, &parts.header, &parts.data, &parts.size) != 1) {
            const bool isAtEnd = ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
            return isAtEnd && !objects.empty() ? std::optional{std::move(objects)} : std::nullopt;
        }
        objects.emplace_back(parts.data, parts.data + parts.size);
    }
    return std::nullopt;
}

} // namespace kivo::reader
