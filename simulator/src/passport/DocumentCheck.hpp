#pragma once

#include "Cryptography.hpp"

#include <kivo/simulator/CountryAuthority.hpp>

#include <nlohmann/json.hpp>
#include <openssl/x509_vfy.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace kivo::simulator::chip {

/// Checks a document as a reader sends it: form, bounds, digests, signature, signer, and whether page and chip belong
/// together. Callable from any thread.
class DocumentCheck {
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    /// Trusts the documents of these countries, or of `CountryAuthority{}` where the list is empty, and judges dates by
    /// the clock; null for the machine's.
    DocumentCheck(const std::vector<std::shared_ptr<const CountryAuthority>>& countries, Clock clock);

    /// Throws a `Violation` that tells what is wrong.
    void require(const nlohmann::ordered_json& document) const;

private:
    void requireChip(const nlohmann::ordered_json& chip, const std::string& zone, std::size_t zoneSize) const;
    /// The signed content of EF.SOD.
    Bytes signedContentOf(const Bytes& securityObject) const;
    void requireTrust(X509* signer) const;

    const Clock clock_;
    std::unique_ptr<X509_STORE, Free<X509_STORE_free>> trusted_;
};

} // namespace kivo::simulator::chip
