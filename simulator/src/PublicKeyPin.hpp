#pragma once

#include <openssl/x509.h>

#include <string>

namespace kivo::simulator {

/// The pin of a certificate as the SDK forms it, reckoned apart from the SDK: a test then compares two sources.
std::string publicKeyPin(const X509* certificate);

} // namespace kivo::simulator
