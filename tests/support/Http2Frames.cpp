#include "support/Http2Frames.hpp"

#include <string_view>

namespace kivo::test::http2 {
namespace {

constexpr std::size_t frameHead = 9;
constexpr std::uint32_t requestsStream = 0x7fff'ffff;

std::uint32_t numberIn(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char byte : bytes) {
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

} // namespace

std::optional<Request> takeRequest(std::string& received, std::map<std::uint32_t, std::string>& begun) {
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

std::string number(std::uint32_t value, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
        text.push_back(static_cast<char>(value >> shift));
    }
    return text;
}

std::string frame(Type type, std::uint8_t flags, const std::string& payload, bool isOnConnection) {
    return number(static_cast<std::uint32_t>(payload.size()), 3) + number(static_cast<std::uint32_t>(type), 1) +
           number(flags, 1) + number(isOnConnection ? 0 : requestsStream) + payload;
}

std::string head(const std::string& length) {
    // Entries of HPACK's static table: the status 200, and the name "content-length" with a value of its own.
    const auto announced = "\x0f\x0d" + number(static_cast<std::uint32_t>(length.size()), 1) + length;
    return frame(Type::headers, endHeaders, length.empty() ? "\x88" : "\x88" + announced);
}

std::string settings() {
    constexpr std::uint8_t acknowledged = 1;
    return frame(Type::settings, 0, "", true) + frame(Type::settings, acknowledged, "", true);
}

std::string onStream(std::string frames, std::uint32_t stream) {
    for (std::size_t at = 0; at < frames.size(); at += frameHead + numberIn(std::string_view{frames}.substr(at, 3))) {
        if (numberIn(std::string_view{frames}.substr(at + 5, 4)) == requestsStream) {
            frames.replace(at + 5, 4, number(stream));
        }
    }
    return frames;
}

} // namespace kivo::test::http2
