#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What the simulated vendor and the simulated document proxy make of application-level encryption: AES-256-GCM under
/// the digest of the session's key text.
namespace kivo::simulator {

/// The sealed text as base64: nonce, authentication tag, cipher text.
std::string seal(std::string_view keyText, std::string_view plain);

/// Absent for anything that was not sealed with this key.
std::optional<std::string> unseal(std::string_view keyText, std::string_view sealed);

std::string base64(std::string_view bytes);

/// Absent for what is no base64 (RFC 4648, with padding).
std::optional<std::string> bytesOfBase64(std::string_view text);

} // namespace kivo::simulator
