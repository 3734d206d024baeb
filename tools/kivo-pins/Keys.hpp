#pragma once

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace pins {

/// A key that may be pinned, with the facts of its certificate.
struct PublicKey {
    /// "leaf", "intermediate", "root", or "key" for a key without a certificate.
    std::string kind;
    std::string subject{};
    std::optional<std::chrono::sys_seconds> expires{};
    /// Such as "RSA 2048".
    std::string type{};
    /// The SDK's pin; absent for a key that the SDK cannot pin.
    std::optional<std::string> pin{};
    /// The digest of the key's own SubjectPublicKeyInfo (RFC 7469), which other software calls the pin.
    std::string standardPin{};
};

/// The keys of a source.
struct Found {
    std::vector<PublicKey> keys;
    /// A sentence for each part of the source that could not be read.
    std::vector<std::string> leftOut{};
};

/// The keys in the file `source`, in standard input for "-", or of the server of that name where there is no such file.
/// The error is a sentence.
std::expected<Found, std::string> keysOf(const std::string& source);

/// The lines about a key, indented.
std::string text(const PublicKey& key, std::chrono::sys_seconds now);

} // namespace pins
