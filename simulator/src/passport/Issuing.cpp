#include "passport/Issuing.hpp"

#include "passport/Numbers.hpp"

#include <openssl/cms.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace kivo::simulator::chip {
namespace {

using Message = std::unique_ptr<CMS_ContentInfo, Free<CMS_ContentInfo_free>>;
using Identifier = std::unique_ptr<ASN1_OBJECT, Free<ASN1_OBJECT_free>>;

/// The object identifier of a digest, with tag and length, and its parameters.
Bytes algorithmOf(HashFunction hash) {
    const auto* const identifier = OBJ_nid2obj(EVP_MD_get_type(hashFunction(hash)));
    const View value{OBJ_get0_data(identifier), OBJ_length(identifier)};
    return object(0x30, joined({object(0x06, value), object(0x05, View{})}));
}

} // namespace

Bytes signedContent(const DocumentSigner& signer, HashFunction hash, const char* contentType, View content) {
    constexpr unsigned flags = CMS_BINARY | CMS_PARTIAL | CMS_NOSMIMECAP;
    const Memory data{BIO_new_mem_buf(content.data(), static_cast<int>(content.size()))};
    const Message message{CMS_sign(nullptr, nullptr, nullptr, data.get(), flags)};
    const Identifier type{OBJ_txt2obj(contentType, 1)};
    const bool isPss = signer.scheme == SignatureScheme::rsaPss;
    auto* const info = message && CMS_set1_eContentType(message.get(), type.get()) == 1
                           ? CMS_add1_signer(message.get(), signer.certificate.get(), signer.key.get(),
                                             hashFunction(hash), flags | (isPss ? CMS_KEY_PARAM : 0U))
                           : nullptr;
    if (info == nullptr ||
        (isPss && EVP_PKEY_CTX_set_rsa_padding(CMS_SignerInfo_get0_pkey_ctx(info), RSA_PKCS1_PSS_PADDING) != 1) ||
        CMS_final(message.get(), data.get(), nullptr, flags) != 1) {
        throw std::runtime_error{"simulator: cannot sign a document's files"};
    }
    unsigned char* der = nullptr;
    const int length = i2d_CMS_ContentInfo(message.get(), &der);
    const std::unique_ptr<unsigned char, Free<freeMemory>> owned{der};
    return {der, der + std::max(length, 0)};
}

Bytes securityObject(const DocumentSigner& signer, HashFunction hash, const std::map<int, Bytes>& groups) {
    Bytes digests;
    for (const auto& [number, content] : groups) {
        const auto entry =
            joined({object(0x02, Bytes{static_cast<std::uint8_t>(number)}), object(0x04, digest(hash, content))});
        digests = joined({digests, object(0x30, entry)});
    }
    const auto content = object(0x30, joined({object(0x02, Bytes{0}), algorithmOf(hash), object(0x30, digests)}));
    return object(0x77, signedContent(signer, hash, "2.23.136.1.1.1", content));
}

Bytes cardSecurity(const DocumentSigner& signer, HashFunction hash, View infos) {
    return signedContent(signer, hash, "0.4.0.127.0.7.3.2.1", infos);
}

} // namespace kivo::simulator::chip
