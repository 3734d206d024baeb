#pragma once

#include "crypto/Certificate.hpp"
#include "verification/Verdict.hpp"

#include <kivo/reader/Card.hpp>

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kivo::reader {

/// How a document signer stands to the authorities that the host trusts.
struct SignerPath {
    /// From the authority that has certified the signer up to the root.
    std::vector<Certificate> authorities{};
    /// `notTried` where no revocation list of the authorities on the path is at hand.
    Proof isNotRevoked = Proof::notTried;
};

/// The country authorities that a host trusts, with their revocation lists. Does not change once made; any thread.
class TrustAnchors {
public:
    /// Roots are the certificates that have signed themselves. Other certificates of authorities, such as link
    /// certificates from a key to its successor, are trusted by way of a root. The rest are document signers, for
    /// documents that do not bring theirs along.
    TrustAnchors(std::vector<Certificate> certificates, std::vector<RevocationList> lists);

    /// The way from the signer to a root over at most four authorities, without regard to dates; absent where there is
    /// none.
    std::optional<SignerPath> pathOf(const Certificate& signer) const;

    /// Document signers among the certificates. None of them is trusted without a path.
    std::span<const Certificate> signers() const { return otherSigners; }

    /// Whether there is no root.
    bool isEmpty() const { return roots.empty(); }

private:
    bool appendPath(const Certificate& from, std::vector<Certificate>& path) const;
    Proof isNotRevoked(const Certificate& signer, const std::vector<Certificate>& path) const;

    std::vector<Certificate> roots;
    std::vector<Certificate> links;
    std::vector<Certificate> otherSigners;
    std::vector<RevocationList> lists;
};

/// The authorities in the files of a folder: certificates and revocation lists in DER or PEM, and master lists (ICAO
/// Doc 9303 part 12). Hidden files and folders are left alone. With `masterListSigner`, a certificate in DER, a master
/// list must be signed by that certificate or by one that it has certified; without, the owner of the folder vouches
/// for the lists.
///
/// The error is a sentence for the host: a folder or a file that others than the process's user or root can write, that
/// cannot be read, that holds something else, or that holds more than 4096 files, 16 MiB a file or 16384 certificates.
std::expected<std::shared_ptr<const TrustAnchors>, std::string> trustAnchorsIn(const std::filesystem::path& folder,
                                                                               ByteView masterListSigner = {});

} // namespace kivo::reader
