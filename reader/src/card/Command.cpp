#include "card/Command.hpp"

namespace kivo::reader {
namespace {

constexpr std::size_t longestAnswer = 65536;
// As many answers of 256 bytes as the longest answer has, and a few in reserve.
constexpr int mostExchanges = 300;
constexpr std::uint8_t moreBytes = 0x61;
constexpr std::uint8_t otherLength = 0x6C;
constexpr std::size_t headerSize = 4;

Bytes getResponse(std::uint8_t length) {
    return encoded({.instruction = 0xC0, .expected = length == 0 ? std::size_t{256} : length});
}

bool isShort(ByteView command) {
    return command.size() <= headerSize + 1 || command[headerSize] != 0;
}

// The same short command with another expected length, which is its last byte.
Bytes withExpected(ByteView command, std::uint8_t length) {
    Bytes changed{command.begin(), command.end()};
    const bool hasData = changed.size() > headerSize + 1;
    const bool hasExpected = changed.size() == headerSize + 1 ||
                             (hasData && changed.size() == headerSize + 1 + changed[headerSize] + std::size_t{1});
    if (hasExpected) {
        changed.back() = length;
    } else {
        changed.push_back(length);
    }
    return changed;
}

} // namespace

Bytes encoded(const Command& command) {
    Bytes bytes{command.classByte, command.instruction, command.parameter1, command.parameter2};
    const auto append = [&bytes](std::size_t number) {
        bytes.push_back(static_cast<std::uint8_t>(number >> 8));
        bytes.push_back(static_cast<std::uint8_t>(number));
    };
    if (command.isLong()) {
        bytes.push_back(0);
        if (!command.data.empty()) {
            append(command.data.size());
        }
    } else if (!command.data.empty()) {
        bytes.push_back(static_cast<std::uint8_t>(command.data.size()));
    }
    bytes.insert(bytes.end(), command.data.begin(), command.data.end());
    if (command.expected > 0 && command.isLong()) {
        append(command.expected);
    } else if (command.expected > 0) {
        bytes.push_back(static_cast<std::uint8_t>(command.expected));
    }
    return bytes;
}

std::expected<Answer, CardError> exchange(Card& card, ByteView command, std::chrono::steady_clock::time_point until) {
    Answer whole;
    Bytes next{command.begin(), command.end()};
    for (int i = 0; i < mostExchanges; ++i) {
        if (i > 0 && std::chrono::steady_clock::now() > until) {
            return std::unexpected{CardError::gone};
        }
        const auto bytes = card.transmit(next);
        if (!bytes) {
            return std::unexpected{bytes.error()};
        }
        if (bytes->size() < 2 || whole.data.size() + bytes->size() - 2 > longestAnswer) {
            return std::unexpected{CardError::broken};
        }
        const auto high = (*bytes)[bytes->size() - 2];
        const auto low = bytes->back();
        if (high == otherLength && i == 0 && bytes->size() == 2 && isShort(command)) {
            next = withExpected(command, low);
            continue;
        }
        whole.data.insert(whole.data.end(), bytes->begin(), bytes->end() - 2);
        whole.status = static_cast<std::uint16_t>(high << 8 | low);
        if (high != moreBytes) {
            return whole;
        }
        next = getResponse(low);
    }
    return std::unexpected{CardError::broken};
}

} // namespace kivo::reader
