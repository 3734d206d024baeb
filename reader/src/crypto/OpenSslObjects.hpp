#pragma once

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/evp.h>

#include <memory>

namespace kivo::reader {

/// Frees an OpenSSL object with the function made for its type.
template <auto free>
struct OpenSslFree {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

using BigNumber = std::unique_ptr<BIGNUM, OpenSslFree<BN_clear_free>>;
using Arithmetic = std::unique_ptr<BN_CTX, OpenSslFree<BN_CTX_free>>;
using Curve = std::unique_ptr<EC_GROUP, OpenSslFree<EC_GROUP_free>>;
using Point = std::unique_ptr<EC_POINT, OpenSslFree<EC_POINT_clear_free>>;
using KeyObject = std::unique_ptr<EVP_PKEY, OpenSslFree<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, OpenSslFree<EVP_PKEY_CTX_free>>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, OpenSslFree<EVP_CIPHER_CTX_free>>;

/// Throws `std::runtime_error` when OpenSSL has failed where only a lack of memory or of randomness makes it fail.
void require(bool succeeded);

} // namespace kivo::reader
