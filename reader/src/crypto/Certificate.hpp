#pragma once

#include <kivo/reader/Card.hpp>

#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

struct x509_st;
struct X509_crl_st;

namespace kivo::reader {

/// A certificate (X.509). Copies share what they hold.
class Certificate {
public:
    /// Absent for what is no certificate, or where other bytes follow.
    static std::optional<Certificate> read(ByteView der);
    explicit Certificate(std::shared_ptr<x509_st> held);

    /// Whether the certificate may certify others.
    bool isAuthority() const;
    /// Whether subject and issuer are the same and the certificate's own key has signed.
    bool isRoot() const;
    /// Whether `authority` has the issuer's name and its key has signed. Looks at no date.
    bool isIssuedBy(const Certificate& authority) const;
    bool isValidAt(std::chrono::system_clock::time_point time) const;

    bool operator==(const Certificate& other) const;

    x509_st* native() const { return held.get(); }

private:
    std::shared_ptr<x509_st> held;
};

/// A list of revoked certificates (X.509).
class RevocationList {
public:
    static std::optional<RevocationList> read(ByteView der);

    /// Whether `authority` has the issuer's name and its key has signed. Looks at no date.
    bool isIssuedBy(const Certificate& authority) const;
    /// Whether the list, which must be of the certificate's issuer, names the certificate.
    bool names(const Certificate& certificate) const;

private:
    explicit RevocationList(std::shared_ptr<X509_crl_st> list);
    std::shared_ptr<X509_crl_st> held;
};

/// The objects in DER of a file, which holds one as it is, or up to `most` in text form (PEM). Absent where the text
/// has no object or more, or is broken, even behind objects that are whole.
std::optional<std::vector<Bytes>> derObjectsIn(ByteView file, std::size_t most);

} // namespace kivo::reader
