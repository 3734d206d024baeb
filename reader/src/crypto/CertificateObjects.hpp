#pragma once

#include "crypto/OpenSslObjects.hpp"

#include <kivo/reader/Card.hpp>

#include <openssl/cms.h>
#include <openssl/err.h>
#include <openssl/x509.h>

#include <memory>

namespace kivo::reader::x509 {

template <auto free>
using Free = OpenSslFree<free>;

using Message = std::unique_ptr<CMS_ContentInfo, Free<CMS_ContentInfo_free>>;
using Stream = std::unique_ptr<BIO, Free<BIO_free_all>>;
using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;
using Number = std::unique_ptr<BIGNUM, Free<BN_free>>;

/// Takes the errors of foreign bytes out of the thread's list, and leaves what the host has in the list.
class Errors {
public:
    Errors() { ERR_set_mark(); }

    ~Errors() { ERR_pop_to_mark(); }

    Errors(const Errors&) = delete;
    Errors& operator=(const Errors&) = delete;
};

} // namespace kivo::reader::x509
