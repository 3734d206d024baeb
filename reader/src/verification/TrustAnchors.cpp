#include "verification/TrustAnchors.hpp"

#include <algorithm>
#include <utility>

namespace kivo::reader {
namespace {

constexpr std::size_t longestPath = 4;

} // namespace

TrustAnchors::TrustAnchors(std::vector<Certificate> certificates, std::vector<RevocationList> revocationLists)
    : lists(std::move(revocationLists)) {
    for (auto& certificate : certificates) {
        if (!certificate.isAuthority()) {
            otherSigners.push_back(std::move(certificate));
        } else if (certificate.isRoot()) {
            roots.push_back(std::move(certificate));
        } else {
            links.push_back(std::move(certificate));
        }
    }
}

bool TrustAnchors::appendPath(const Certificate& from, std::vector<Certificate>& path) const {
    for (const auto& root : roots) {
        if (from.isIssuedBy(root)) {
            path.push_back(root);
            return true;
        }
    }
    if (path.size() + 1 == longestPath) {
        return false;
    }
    for (const auto& link : links) {
        if (std::ranges::count(path, link) > 0 || !from.isIssuedBy(link)) {
            continue;
        }
        path.push_back(link);
        if (appendPath(link, path)) {
            return true;
        }
        path.pop_back();
    }
    return false;
}

Proof TrustAnchors::isNotRevoked(const Certificate& signer, const std::vector<Certificate>& path) const {
    auto proof = Proof::notTried;
    const auto* certificate = &signer;
    for (const auto& authority : path) {
        for (const auto& list : lists) {
            if (!list.isIssuedBy(authority)) {
                continue;
            }
            if (list.names(*certificate)) {
                return Proof::refuted;
            }
            // A list of the root about a link says nothing about the signer.
            proof = certificate == &signer ? Proof::proven : proof;
        }
        certificate = &authority;
    }
    return proof;
}

std::optional<SignerPath> TrustAnchors::pathOf(const Certificate& signer) const {
    std::vector<Certificate> path;
    if (!appendPath(signer, path)) {
        return std::nullopt;
    }
    const auto proof = isNotRevoked(signer, path);
    return SignerPath{.authorities = std::move(path), .isNotRevoked = proof};
}

} // namespace kivo::reader
