#pragma once

#include <kivo/platform/Trust.hpp>

#include <openssl/evp.h>

#include <memory>
#include <optional>
#include <string>

namespace kivo::platform {

std::shared_ptr<Trust> makeOpenSslTrust();

/// A public key in the form that `Trust::externalPublicKey` gives; absent for a key that is neither RSA nor on a curve.
std::optional<std::string> externalForm(const EVP_PKEY& key);

} // namespace kivo::platform
