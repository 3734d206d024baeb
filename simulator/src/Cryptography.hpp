#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// The simulator's encryption, encoding and pins. They share no code with the SDK, so that a test compares two sources.
namespace kivo::simulator {

/// Frees an OpenSSL object with the function made for its type.
template <auto free>
struct Free {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Free<X509_free>>;
using Memory = std::unique_ptr<BIO, Free<BIO_free>>;

/// The text encrypted with AES-256-GCM under the digest of `keyText`, as base64: nonce, authentication tag, cipher
/// text. The simulated document reader encrypts documents so, and the simulated document proxy decrypts them.
std::string seal(std::string_view keyText, std::string_view plain);

/// The plain text; absent for a text that was not sealed with this key.
std::optional<std::string> unseal(std::string_view keyText, std::string_view sealed);

std::string base64(std::string_view bytes);

/// Absent for a text that is no base64 (RFC 4648, with padding).
std::optional<std::string> bytesOfBase64(std::string_view text);

/// The pin of a certificate, as the SDK forms it.
std::string publicKeyPin(const X509* certificate);

/// The same for a certificate in DER form; empty when `der` holds no certificate.
std::string publicKeyPin(std::string_view der);

} // namespace kivo::simulator
