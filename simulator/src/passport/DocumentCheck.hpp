#pragma once

#include "Cryptography.hpp"

#include <kivo/simulator/CountryAuthority.hpp>

#include <nlohmann/json.hpp>
#include <openssl/x509_vfy.h>

#include <memory>
#include <vector>

namespace kivo::simulator::chip {

/// Checks a document as a reader sends it: form, bounds, digests, signature, signer, and whether page and chip belong
/// together. Callable from any thread.
class DocumentCheck {
public:
    /// Trusts the documents of these countries; of none for those of `CountryAuthority{}`.
    explicit DocumentCheck(const std::vector<std::shared_ptr<const CountryAuthority>>& countries);

    /// Throws a `Violation` that tells what is wrong.
    void require(const nlohmann::ordered_json& document) const;

private:
    void requireChip(const nlohmann::ordered_json& chip, const std::string& zone, std::size_t zoneSize) const;
    /// The signed content of EF.SOD.
    Bytes signedContentOf(const Bytes& securityObject) const;
    void requireTrust(X509* signer) const;

    std::unique_ptr<X509_STORE, Free<X509_STORE_free>> trusted_;
};

} // namespace kivo::simulator::chip
