#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// As much of HTTP/2 (RFC 9113) as a server needs that leaves every frame to its test.
namespace kivo::test::http2 {

enum class Type : std::uint8_t {
    data = 0,
    headers = 1,
    resetStream = 3,
    settings = 4,
    ping = 6,
    goAway = 7,
    windowUpdate = 8
};

inline constexpr std::uint8_t endStream = 1;
inline constexpr std::uint8_t endHeaders = 4;
inline constexpr std::size_t prefaceSize = 24;
inline constexpr std::size_t frameHead = 9;
inline constexpr std::uint32_t requestsStream = 0x7fff'ffff;

/// The payloads of a request's frames, and the number of its stream.
struct Request {
    std::string bytes;
    std::uint32_t stream = 0;
};

inline std::uint32_t numberIn(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char byte : bytes) {
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

/// Takes frames away up to the end of a request; absent when no request has come wholly. `begun` holds the parts of the
/// others.
inline std::optional<Request> takeRequest(std::string& received, std::map<std::uint32_t, std::string>& begun) {
    while (received.size() >= frameHead) {
        const auto size = frameHead + numberIn(received.substr(0, 3));
        if (received.size() < size) {
            break;
        }
        const auto frame = received.substr(0, size);
        received.erase(0, size);
        const auto type = static_cast<Type>(frame[3]);
        const auto stream = numberIn(frame.substr(5, 4));
        if (type == Type::data || type == Type::headers) {
            begun[stream] += frame.substr(frameHead);
            if ((frame[4] & endStream) != 0) {
                return Request{begun[stream], stream};
            }
        }
    }
    return std::nullopt;
}

/// A number as it travels.
inline std::string number(std::uint32_t value, int bytes = 4) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
        text.push_back(static_cast<char>(value >> shift));
    }
    return text;
}

/// A frame on the stream of the request that is answered, or on the connection.
inline std::string frame(Type type, std::uint8_t flags, const std::string& payload, bool isOnConnection = false) {
    return number(static_cast<std::uint32_t>(payload.size()), 3) + number(static_cast<std::uint32_t>(type), 1) +
           number(flags, 1) + number(isOnConnection ? 0 : requestsStream) + payload;
}

/// The head of an answer with the status 200, which announces `length` bytes unless it is empty.
inline std::string head(const std::string& length = "") {
    // Entries of HPACK's static table: the status 200, and the name "content-length" with a value of its own.
    const auto announced = "\x0f\x0d" + number(static_cast<std::uint32_t>(length.size()), 1) + length;
    return frame(Type::headers, endHeaders, length.empty() ? "\x88" : "\x88" + announced);
}

/// A whole answer with the status 200.
inline std::string answer(const std::string& body = "a") {
    return head(std::to_string(body.size())) + frame(Type::data, endStream, body);
}

/// The end of a stream before its answer is whole.
inline std::string resetWith(std::uint32_t code) {
    return frame(Type::resetStream, 0, number(code));
}

/// The server's settings, and its word that it has read the client's.
inline std::string settings() {
    constexpr std::uint8_t acknowledged = 1;
    return frame(Type::settings, 0, "", true) + frame(Type::settings, acknowledged, "", true);
}

/// The frames, those on the request's stream now on this one.
inline std::string onStream(std::string frames, std::uint32_t stream) {
    for (std::size_t at = 0; at < frames.size(); at += frameHead + numberIn(std::string_view{frames}.substr(at, 3))) {
        if (numberIn(std::string_view{frames}.substr(at + 5, 4)) == requestsStream) {
            frames.replace(at + 5, 4, number(stream));
        }
    }
    return frames;
}

} // namespace kivo::test::http2
