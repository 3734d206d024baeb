#pragma once

#include <kivo/platform/Trust.hpp>

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {

/// Trust on OpenSSL.
std::shared_ptr<Trust> makeOpenSslTrust();

/// A public key in the form that `Trust::externalPublicKey` gives; absent for a key that is neither RSA nor EC.
std::optional<std::string> externalForm(const EVP_PKEY& key);

/// The chain that starts with `leaf`: each certificate was issued by the next certificate, which is taken from
/// `presented`.
///
/// A server may present any certificates, so only signatures count: a certificate is in the chain when it belongs to an
/// authority and its key verifies the signature of the certificate before. Dates and host names are not checked.
std::vector<X509*> linkedChain(X509* leaf, const STACK_OF(X509) * presented);

} // namespace kivo::platform
