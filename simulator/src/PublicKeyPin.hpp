#pragma once

#include <openssl/x509.h>

#include <string>
#include <string_view>

namespace kivo::simulator {

/// The pin of a certificate as the SDK forms it, reckoned apart from the SDK: a test then compares two sources.
std::string publicKeyPin(const X509* certificate);

/// The same for a certificate in DER form; empty when it is none.
std::string publicKeyPin(std::string_view certificate);

} // namespace kivo::simulator
