#include "passport/Command.hpp"

namespace kivo::simulator::chip {
namespace {

constexpr std::size_t headerSize = 4;

std::size_t lengthIn(View bytes) {
    std::size_t number = 0;
    for (const auto byte : bytes) {
        number = number << 8U | byte;
    }
    return number;
}

/// Fills data and expected length from what follows the header and, of a long command, the zero that marks it.
/// `width` is the number of bytes of a length.
bool fill(Command& command, View body, std::size_t width) {
    const std::size_t most = width == 1 ? 0x100 : 0x10000;
    if (body.size() < width) {
        return false;
    }
    const auto first = lengthIn(body.first(width));
    if (body.size() == width) {
        command.expected = first == 0 ? most : first;
        return true;
    }
    body = body.subspan(width);
    if (first == 0 || first > body.size()) {
        return false;
    }
    command.data = copied(body.first(first));
    body = body.subspan(first);
    if (body.size() == width) {
        const auto expected = lengthIn(body);
        command.expected = expected == 0 ? most : expected;
        return true;
    }
    return body.empty();
}

} // namespace

std::expected<Command, Status> commandFrom(View bytes, bool takesExtendedLength) {
    if (bytes.size() < headerSize) {
        return std::unexpected{Status::wrongLength};
    }
    Command command{.classByte = bytes[0], .instruction = bytes[1], .first = bytes[2], .second = bytes[3]};
    if ((command.classByte & 0xE3U) != 0) {
        return std::unexpected{Status::unknownClass};
    }
    auto body = bytes.subspan(headerSize);
    if (body.empty()) {
        return command;
    }
    command.isExtended = body.size() >= 3 && body[0] == 0;
    if (command.isExtended) {
        body = body.subspan(1);
    }
    if ((command.isExtended && !takesExtendedLength) || !fill(command, body, command.isExtended ? 2 : 1)) {
        return std::unexpected{Status::wrongLength};
    }
    return command;
}

} // namespace kivo::simulator::chip
