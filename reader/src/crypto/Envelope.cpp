#include "crypto/Envelope.hpp"

#include "crypto/CertificateObjects.hpp"

#include <openssl/crypto.h>
#include <openssl/rsa.h>

#include <cstddef>
#include <utility>
#include <variant>

namespace kivo::reader {
namespace {

using EnvelopeCertificate = std::unique_ptr<X509, x509::Free<X509_free>>;

constexpr std::size_t wrappingKeySize = 32;
constexpr std::size_t longestKeyText = std::size_t{16} * 1024;
/// The identifier of a recipient's symmetric key: the name under which a session gives the key.
constexpr std::string_view keyIdentifier = "biodata-encrypt-key";

/// A symmetric key, wiped when it goes.
struct WrappingKey {
    explicit WrappingKey(Bytes key)
        : bytes{std::move(key)} {}

    WrappingKey(const WrappingKey&) = delete;
    WrappingKey& operator=(const WrappingKey&) = delete;

    ~WrappingKey() { OPENSSL_cleanse(bytes.data(), bytes.size()); }

    Bytes bytes;
};

std::optional<Bytes> bytesOfKeyText(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0 || text.size() > longestKeyText) {
        return std::nullopt;
    }
    Bytes bytes(text.size() / 4 * 3);
    if (EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                        static_cast<int>(text.size())) < 0) {
        return std::nullopt;
    }
    const std::ptrdiff_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    bytes.erase(bytes.end() - padding, bytes.end());
    return bytes;
}

/// A copy that OpenSSL frees.
unsigned char* copied(ByteView bytes) {
    return static_cast<unsigned char*>(OPENSSL_memdup(bytes.data(), bytes.size()));
}

bool addKey(CMS_ContentInfo& message, const Bytes& key) {
    auto* const bytes = copied(key);
    auto* const name = copied({reinterpret_cast<const std::uint8_t*>(keyIdentifier.data()), keyIdentifier.size()});
    if (bytes != nullptr && name != nullptr &&
        CMS_add0_recipient_key(&message, NID_id_aes256_wrap, bytes, key.size(), name, keyIdentifier.size(), nullptr,
                               nullptr, nullptr) != nullptr) {
        return true;
    }
    OPENSSL_clear_free(bytes, key.size());
    OPENSSL_free(name);
    return false;
}

bool addCertificate(CMS_ContentInfo& message, X509& certificate) {
    auto* const recipient = CMS_add1_recipient_cert(&message, &certificate, CMS_KEY_PARAM);
    if (recipient == nullptr) {
        return false;
    }
    if (CMS_RecipientInfo_type(recipient) != CMS_RECIPINFO_TRANS) {
        return true;
    }
    auto* const context = CMS_RecipientInfo_get0_pkey_ctx(recipient);
    return context != nullptr && EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_OAEP_PADDING) > 0 &&
           EVP_PKEY_CTX_set_rsa_oaep_md(context, EVP_sha256()) > 0;
}

} // namespace

struct EnvelopeKey::Content {
    std::variant<std::unique_ptr<const WrappingKey>, EnvelopeCertificate> key;
};

EnvelopeKey::EnvelopeKey(std::shared_ptr<const Content> content)
    : content_{std::move(content)} {}

std::optional<EnvelopeKey> EnvelopeKey::parsed(std::string_view text) {
    const x509::Errors errors;
    auto bytes = bytesOfKeyText(text);
    if (!bytes) {
        return std::nullopt;
    }
    if (bytes->size() == wrappingKeySize) {
        return EnvelopeKey{
            std::make_shared<const Content>(Content{std::make_unique<const WrappingKey>(std::move(*bytes))})};
    }
    const auto* begin = std::as_const(*bytes).data();
    EnvelopeCertificate certificate{d2i_X509(nullptr, &begin, static_cast<long>(bytes->size()))};
    if (!certificate || begin != bytes->data() + bytes->size()) {
        return std::nullopt;
    }
    return EnvelopeKey{std::make_shared<const Content>(Content{std::move(certificate)})};
}

std::optional<Bytes> sealedMessage(ByteView plain, const std::vector<EnvelopeKey>& recipients) {
    const x509::Errors errors;
    const x509::Message message{CMS_AuthEnvelopedData_create(EVP_aes_256_gcm())};
    const x509::Stream source{BIO_new_mem_buf(plain.data(), static_cast<int>(plain.size()))};
    bool isSealed = message && source && !recipients.empty();
    for (const auto& recipient : recipients) {
        const auto& key = recipient.content_->key;
        if (const auto* const wrapping = std::get_if<std::unique_ptr<const WrappingKey>>(&key)) {
            isSealed = isSealed && addKey(*message, (*wrapping)->bytes);
        } else {
            isSealed = isSealed && addCertificate(*message, *std::get<EnvelopeCertificate>(key));
        }
    }
    isSealed = isSealed && CMS_set_detached(message.get(), 0) == 1 &&
               CMS_final(message.get(), source.get(), nullptr, CMS_BINARY) == 1;
    const int size = isSealed ? i2d_CMS_ContentInfo(message.get(), nullptr) : 0;
    if (size <= 0) {
        return std::nullopt;
    }
    Bytes der(static_cast<std::size_t>(size));
    auto* end = der.data();
    i2d_CMS_ContentInfo(message.get(), &end);
    return der;
}

} // namespace kivo::reader
