#include "support/ForgedCertificate.hpp"

#include "platform/openssl/OpenSslObjects.hpp"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <array>
#include <utility>

namespace kivo::test {
namespace {

using platform::KeyPointer;
using platform::OpenSslFree;
using platform::X509Pointer;
using Memory = std::unique_ptr<BIO, OpenSslFree<BIO_free>>;

Memory reading(const std::string& text) {
    return Memory{BIO_new_mem_buf(text.data(), static_cast<int>(text.size()))};
}

template <class Write>
std::string written(const Write& write) {
    const Memory memory{BIO_new(BIO_s_mem())};
    write(memory.get());
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

} // namespace

simulator::IssuedCertificate forgedLeaf(const std::string& issuer, const std::string& signingKey,
                                        const char* constraints) {
    const X509Pointer above{PEM_read_bio_X509(reading(issuer).get(), nullptr, nullptr, nullptr)};
    const KeyPointer signer{PEM_read_bio_PrivateKey(reading(signingKey).get(), nullptr, nullptr, nullptr)};
    const KeyPointer key{EVP_EC_gen("P-256")};
    const X509Pointer leaf{X509_new()};
    X509_set_version(leaf.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(leaf.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(leaf.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(leaf.get()), 86'400);
    X509_set_pubkey(leaf.get(), key.get());
    static int count = 0;
    const auto name = "forged " + std::to_string(++count);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(leaf.get()), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509_set_issuer_name(leaf.get(), X509_get_subject_name(above.get()));
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, above.get(), leaf.get(), nullptr, nullptr, 0);
    for (const auto& [kind, value] :
         {std::pair{NID_subject_alt_name, "DNS:localhost"}, std::pair{NID_subject_key_identifier, "hash"},
          std::pair{NID_authority_key_identifier, "keyid:always"}, std::pair{NID_basic_constraints, constraints}}) {
        const std::unique_ptr<X509_EXTENSION, OpenSslFree<X509_EXTENSION_free>> extension{
            X509V3_EXT_conf_nid(nullptr, &context, kind, value)};
        X509_add_ext(leaf.get(), extension.get(), -1);
    }
    X509_sign(leaf.get(), signer.get(), EVP_sha256());
    return {.chain = written([&](BIO* memory) { PEM_write_bio_X509(memory, leaf.get()); }),
            .privateKey = written([&](BIO* memory) {
                PEM_write_bio_PrivateKey(memory, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
            }),
            .pins = {}};
}

std::string derOf(const std::string& pem) {
    const X509Pointer certificate{PEM_read_bio_X509(reading(pem).get(), nullptr, nullptr, nullptr)};
    return platform::derOf(certificate.get(), i2d_X509);
}

std::vector<std::string> certificatesIn(const std::string& pem) {
    constexpr std::string_view end = "-----END CERTIFICATE-----\n";
    std::vector<std::string> all;
    for (std::size_t from = 0, to = 0; (to = pem.find(end, from)) != pem.npos; from = to) {
        to += end.size();
        all.push_back(pem.substr(from, to - from));
    }
    return all;
}

} // namespace kivo::test
