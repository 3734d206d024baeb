#include "platform/openssl/CertificateChain.hpp"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <algorithm>

namespace kivo::platform {
namespace {

constexpr std::size_t longestChain = 10;
// What OpenSSL calls an authority by its basic constraints, and not by a guess at an old certificate.
constexpr int isAuthority = 1;

bool allowsBelow(X509* authority, std::size_t authoritiesBelow) {
    const long limit = X509_get_pathlen(authority);
    return limit < 0 || authoritiesBelow <= static_cast<std::size_t>(limit);
}

bool hasIssued(X509* authority, X509* certificate) {
    return X509_check_issued(authority, certificate) == X509_V_OK && X509_check_ca(authority) == isAuthority &&
           X509_verify(certificate, X509_get0_pubkey(authority)) == 1;
}

} // namespace

std::vector<X509*> linkedChain(X509* leaf, const STACK_OF(X509) * presented) {
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
    // Signatures that did not fit are no errors of the connection.
    ERR_clear_error();
    return chain;
}

} // namespace kivo::platform
