#pragma once

#include <openssl/x509.h>

#include <vector>

namespace kivo::platform {

/// The chain that starts with `leaf`: each certificate was issued by the next one, which is taken from `presented`.
///
/// A server may present whatever it likes. What counts is who signed: a certificate is in the chain only when its
/// key verifies the signature of the one before, and when it is an authority's. Dates and host names are not looked at.
std::vector<X509*> linkedChain(X509* leaf, const STACK_OF(X509) * presented);

} // namespace kivo::platform
