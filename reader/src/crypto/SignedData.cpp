#include "crypto/SignedData.hpp"

#include "crypto/CertificateObjects.hpp"

#include <array>
#include <ctime>
#include <utility>

namespace kivo::reader {
namespace {

constexpr std::size_t largestMessage = std::size_t{16} << 20;

std::string dotted(const ASN1_OBJECT* object) {
    constexpr int withoutName = 1;
    std::array<char, 80> text{};
    const int size = OBJ_obj2txt(text.data(), text.size(), object, withoutName);
    return size > 0 && size < static_cast<int>(text.size()) ? std::string{text.data()} : std::string{};
}

CMS_SignerInfo* onlySigner(CMS_ContentInfo* message) {
    auto* signers = CMS_get0_SignerInfos(message);
    return signers != nullptr && sk_CMS_SignerInfo_num(signers) == 1 ? sk_CMS_SignerInfo_value(signers, 0) : nullptr;
}

using CertificateStack =
    std::unique_ptr<STACK_OF(X509), decltype([](STACK_OF(X509) * stack) { sk_X509_pop_free(stack, X509_free); })>;

} // namespace

std::optional<SignedMessage> SignedMessage::read(ByteView der) {
    const x509::Errors errors;
    if (der.empty() || der.size() > largestMessage) {
        return std::nullopt;
    }
    const auto* at = der.data();
    SignedMessage read;
    read.message.reset(d2i_CMS_ContentInfo(nullptr, &at, static_cast<long>(der.size())), CMS_ContentInfo_free);
    auto* const message = read.message.get();
    if (message == nullptr || at != der.data() + der.size() ||
        OBJ_obj2nid(CMS_get0_type(message)) != NID_pkcs7_signed || onlySigner(message) == nullptr) {
        return std::nullopt;
    }
    auto* const* content = CMS_get0_content(message);
    if (content == nullptr || *content == nullptr) {
        return std::nullopt;
    }
    const auto* begin = ASN1_STRING_get0_data(*content);
    read.signedContent.assign(begin, begin + ASN1_STRING_length(*content));
    read.kind = dotted(CMS_get0_eContentType(message));
    return read;
}

std::optional<Certificate> SignedMessage::signer(std::span<const Certificate> others) const {
    const x509::Errors errors;
    auto* const signer = onlySigner(message.get());
    const CertificateStack own{CMS_get1_certs(message.get())};
    for (int i = 0; own && i < sk_X509_num(own.get()); ++i) {
        auto* const certificate = sk_X509_value(own.get(), i);
        if (CMS_SignerInfo_cert_cmp(signer, certificate) == 0) {
            X509_up_ref(certificate);
            return Certificate{std::shared_ptr<X509>{certificate, X509_free}};
        }
    }
    for (const auto& certificate : others) {
        if (CMS_SignerInfo_cert_cmp(signer, certificate.native()) == 0) {
            return certificate;
        }
    }
    return std::nullopt;
}

bool SignedMessage::signatureHolds(const Certificate& signer) const {
    const x509::Errors errors;
    const CertificateStack certificates{sk_X509_new_null()};
    const x509::Stream output{BIO_new(BIO_s_null())};
    X509_up_ref(signer.native());
    if (!certificates || sk_X509_push(certificates.get(), signer.native()) == 0) {
        X509_free(signer.native());
        return false;
    }
    // Of all certificates only the signer's counts, whatever the message brings along.
    constexpr unsigned flags = CMS_NO_SIGNER_CERT_VERIFY | CMS_NOINTERN | CMS_BINARY;
    return CMS_verify(message.get(), certificates.get(), nullptr, nullptr, output.get(), flags) == 1;
}

std::optional<std::chrono::system_clock::time_point> SignedMessage::signingTime() const {
    const x509::Errors errors;
    const auto* const signer = onlySigner(message.get());
    const int at = CMS_signed_get_attr_by_NID(signer, NID_pkcs9_signingTime, -1);
    auto* const attribute = at < 0 ? nullptr : CMS_signed_get_attr(signer, at);
    const auto* const value = attribute == nullptr ? nullptr : X509_ATTRIBUTE_get0_type(attribute, 0);
    if (value == nullptr || (value->type != V_ASN1_UTCTIME && value->type != V_ASN1_GENERALIZEDTIME)) {
        return std::nullopt;
    }
    std::tm time{};
    if (ASN1_TIME_to_tm(value->value.utctime, &time) != 1) {
        return std::nullopt;
    }
    return std::chrono::system_clock::from_time_t(timegm(&time));
}

Bytes digestBy(const std::string& identifier, ByteView data) {
    constexpr std::array<std::pair<std::string_view, const EVP_MD* (*)()>, 5> functions{
        {{"1.3.14.3.2.26", EVP_sha1},
         {"2.16.840.1.101.3.4.2.4", EVP_sha224},
         {"2.16.840.1.101.3.4.2.1", EVP_sha256},
         {"2.16.840.1.101.3.4.2.2", EVP_sha384},
         {"2.16.840.1.101.3.4.2.3", EVP_sha512}}};
    for (const auto& [name, function] : functions) {
        if (name == identifier) {
            Bytes digest(EVP_MAX_MD_SIZE);
            unsigned size = 0;
            EVP_Digest(data.data(), data.size(), digest.data(), &size, function(), nullptr);
            digest.resize(size);
            return digest;
        }
    }
    return {};
}

} // namespace kivo::reader
