#pragma once

#include <kivo/Export.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The length of the longest address that is accepted, in bytes.
inline constexpr std::size_t longestUrl = 8192;

/// The destination of an absolute address.
struct Url {
    /// In lower case.
    std::string scheme;
    /// In lower case, and without the brackets of a numeric IPv6 host.
    std::string host;
    /// Zero where the address names no port and the scheme is neither https nor http.
    std::uint16_t port = 0;
};

/// Parses the absolute address of a server: scheme, "://", host, and the further parts that RFC 3986 allows. Any
/// thread.
///
/// Absent for any other text: a relative address, an address without a host, a character that RFC 3986 does not allow,
/// a host that is neither a name nor a numeric address, a port outside 1 to 65535, an address longer than `longestUrl`.
/// User information is refused as well, because "https://bank.example@thief.example" leads to the thief.
KIVO_EXPORT std::optional<Url> parseUrl(std::string_view text);

} // namespace kivo::platform
