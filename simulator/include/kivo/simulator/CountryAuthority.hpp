#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kivo::simulator {

/// Bytes as chips and certificates have them.
using Bytes = std::vector<std::uint8_t>;

/// The digests of signed documents.
enum class HashFunction { sha1, sha224, sha256, sha384, sha512 };

/// The signatures of certificates and documents.
enum class SignatureScheme { ecdsa, rsaPss, rsa };

/// The authority of a state that issues simulated travel documents: a certificate of its own, document signers below
/// the certificate, and a revocation list. Callable from any thread.
///
/// An authority with `SignatureScheme::ecdsa` has the same key in every process, derived from its name, so a service in
/// one process trusts the passports of another. So everybody has the key: trust these certificates in tests only.
class CountryAuthority {
public:
    /// The two letters of a state, and the scheme of the authority's own signatures. "UT" is Utopia, the state of all
    /// specimens.
    explicit CountryAuthority(std::string country = "UT", SignatureScheme scheme = SignatureScheme::ecdsa);
    CountryAuthority(const CountryAuthority&) = delete;
    CountryAuthority& operator=(const CountryAuthority&) = delete;
    ~CountryAuthority();

    /// The two letters of the state.
    const std::string& country() const;

    /// The authority's certificate, in DER.
    Bytes certificate() const;

    /// The list of revoked certificates, in DER. It names the signer of `ChipFault::revokedSigner`.
    Bytes revocationList() const;

    /// A master list (ICAO Doc 9303 part 12) with the authority's certificate, in DER.
    Bytes masterList() const;

    /// Writes certificate, list of revoked certificates and master list into a folder: UT.cer, UT.crl and UT.ml for
    /// Utopia. The folder is made where needed, in a folder that is there. Throws `std::filesystem::filesystem_error`
    /// where a file cannot be written.
    void save(const std::filesystem::path& folder) const;

    /// The authority's keys and signers, for the documents that the simulator issues.
    struct Keys;
    const Keys& keys() const;

private:
    std::unique_ptr<const Keys> keys_;
};

} // namespace kivo::simulator
