#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// As much of HTTP/2 (RFC 9113) as a server needs that leaves every frame to its test.
namespace kivo::test::http2 {

enum class Type : std::uint8_t { data = 0, headers = 1, resetStream = 3, settings = 4, goAway = 7 };

inline constexpr std::uint8_t endStream = 1;
inline constexpr std::uint8_t endHeaders = 4;
inline constexpr std::size_t prefaceSize = 24;

/// The payloads of a request's frames, and the number of its stream.
struct Request {
    std::string bytes;
    std::uint32_t stream = 0;
};

/// Takes frames away up to the end of a request; absent when no request has come wholly. `begun` holds the parts of the
/// others.
std::optional<Request> takeRequest(std::string& received, std::map<std::uint32_t, std::string>& begun);

/// A number as it travels.
std::string number(std::uint32_t value, int bytes = 4);

/// A frame on the stream of the request that is answered, or on the connection.
std::string frame(Type type, std::uint8_t flags, const std::string& payload, bool isOnConnection = false);

/// The head of an answer with the status 200, which announces `length` bytes unless it is empty.
std::string head(const std::string& length = "");

/// The server's settings, and its word that it has read the client's.
std::string settings();

/// The frames, those on the request's stream now on this one.
std::string onStream(std::string frames, std::uint32_t stream);

} // namespace kivo::test::http2
