#pragma once

#include "platform/openssl/OpenSslObjects.hpp"

#include <kivo/simulator/CertificateAuthority.hpp>

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <string>
#include <utility>
#include <vector>

namespace kivo::test {
using Extension = std::unique_ptr<X509_EXTENSION, platform::OpenSslFree<X509_EXTENSION_free>>;
using Memory = std::unique_ptr<BIO, platform::OpenSslFree<BIO_free>>;

inline Memory reading(const std::string& text) {
    return Memory{BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))};
}

inline platform::X509Pointer firstOf(const std::string& pem) {
    return platform::X509Pointer{PEM_read_bio_X509(reading(pem).get(), nullptr, nullptr, nullptr)};
}

/// A leaf for "localhost" on a new key that names `issuer` (the first certificate of a PEM text) as the one that issued
/// it, but is signed with `signingKey` (PEM). Its chain holds the leaf alone, and it comes without pins. With basic
/// constraints, such as "CA:TRUE,pathlen:0", it is no leaf.
inline simulator::IssuedCertificate forgedLeaf(const std::string& issuer, const std::string& signingKey,
                                               const char* constraints = "CA:FALSE") {
    static int count = 0;
    const auto genuine = simulator::CertificateAuthority{}.issue(
        {.names = {"forged" + std::to_string(++count), "localhost"}, .keyType = simulator::KeyType::ec256});
    const auto leaf = firstOf(genuine.chain);
    const auto above = firstOf(issuer);
    const platform::KeyPointer signer{PEM_read_bio_PrivateKey(reading(signingKey).get(), nullptr, nullptr, nullptr)};
    X509_set_issuer_name(leaf.get(), X509_get_subject_name(above.get()));
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, above.get(), leaf.get(), nullptr, nullptr, 0);
    for (const auto& [kind, value] :
         {std::pair{NID_authority_key_identifier, "keyid:always"}, std::pair{NID_basic_constraints, constraints}}) {
        const Extension former{X509_delete_ext(leaf.get(), X509_get_ext_by_NID(leaf.get(), kind, -1))};
        const Extension extension{X509V3_EXT_conf_nid(nullptr, &context, kind, value)};
        X509_add_ext(leaf.get(), extension.get(), -1);
    }
    X509_sign(leaf.get(), signer.get(), EVP_sha256());
    const Memory memory{BIO_new(BIO_s_mem())};
    PEM_write_bio_X509(memory.get(), leaf.get());
    const char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return {.chain{text, static_cast<std::size_t>(size)}, .privateKey = genuine.privateKey, .pins = {}};
}

/// The first certificate of a PEM text in DER form.
inline std::string derOf(const std::string& pem) {
    return platform::derOf(firstOf(pem).get(), i2d_X509);
}

/// The certificates of a PEM text, each as PEM text.
inline std::vector<std::string> certificatesIn(const std::string& pem) {
    constexpr std::string_view end = "-----END CERTIFICATE-----\n";
    std::vector<std::string> all;
    for (std::size_t from = 0, to = 0; (to = pem.find(end, from)) != pem.npos; from = to) {
        to += end.size();
        all.push_back(pem.substr(from, to - from));
    }
    return all;
}

} // namespace kivo::test
