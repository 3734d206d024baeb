#include "FuzzInput.hpp"
#include "platform/openssl/CertificateChain.hpp"
#include "platform/openssl/OpenSslObjects.hpp"
#include "platform/openssl/OpenSslTrust.hpp"

#include <vector>

using namespace kivo::platform;

namespace {

/// What a server presents: certificates in DER form, one behind the other.
std::vector<X509Pointer> certificatesIn(std::string_view bytes) {
    std::vector<X509Pointer> certificates;
    const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* const end = at + bytes.size();
    while (at != end) {
        X509Pointer certificate{d2i_X509(nullptr, &at, end - at)};
        if (!certificate) {
            break;
        }
        certificates.push_back(std::move(certificate));
    }
    return certificates;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto trust = makeOpenSslTrust();
    const auto bytes = kivo::fuzz::textOf(data, size);
    trust->externalPublicKey(bytes);
    trust->validity(bytes, "localhost");
    const auto certificates = certificatesIn(bytes);
    if (certificates.empty()) {
        return 0;
    }
    const std::unique_ptr<STACK_OF(X509), decltype([](STACK_OF(X509) * stack) { sk_X509_free(stack); })> presented{
        sk_X509_new_null()};
    for (const auto& certificate : certificates) {
        sk_X509_push(presented.get(), certificate.get());
    }
    for (auto* const certificate : linkedChain(certificates.front().get(), presented.get())) {
        const auto der = derOf(certificate, i2d_X509);
        trust->externalPublicKey(der);
        trust->validity(der, "localhost");
    }
    return 0;
}
