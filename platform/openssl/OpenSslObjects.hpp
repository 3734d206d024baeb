#pragma once

#include <openssl/err.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

/// Frees an OpenSSL object with the function made for its type.
template <auto free>
struct OpenSslFree {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

using X509Pointer = std::unique_ptr<X509, OpenSslFree<X509_free>>;
using KeyPointer = std::unique_ptr<EVP_PKEY, OpenSslFree<EVP_PKEY_free>>;

/// Takes the errors that OpenSSL adds during the scope out of the thread's list, and leaves the errors of the host.
class OpenSslErrors {
public:
    OpenSslErrors() { ERR_set_mark(); }

    OpenSslErrors(const OpenSslErrors&) = delete;
    OpenSslErrors& operator=(const OpenSslErrors&) = delete;

    ~OpenSslErrors() { ERR_pop_to_mark(); }
};

/// The certificate in these bytes (DER), or null.
inline X509Pointer certificateIn(std::string_view der) {
    const auto* begin = reinterpret_cast<const unsigned char*>(der.data());
    return X509Pointer{d2i_X509(nullptr, &begin, static_cast<long>(der.size()))};
}

/// The DER form of an object, made by the i2d function of its type; empty when the function fails.
template <class T, class Encode>
std::string derOf(T* object, const Encode& encode) {
    const int size = encode(object, nullptr);
    std::string der(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    if (!der.empty()) {
        auto* end = reinterpret_cast<unsigned char*>(der.data());
        encode(object, &end);
    }
    return der;
}

} // namespace kivo::platform
