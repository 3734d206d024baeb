#include "messaging/SecureMessaging.hpp"

#include "tlv/Tlv.hpp"

#include <ranges>

namespace kivo::reader {
namespace {

constexpr std::uint32_t cryptogram = 0x87;
constexpr std::uint32_t cryptogramOfObjects =
    0x85; // of commands with an odd instruction, and without the indicator below
constexpr std::uint32_t expectedLength = 0x97;
constexpr std::uint32_t processingStatus = 0x99;
constexpr std::uint32_t checksum = 0x8E;
constexpr std::uint8_t isPaddedWithMark = 0x01;
constexpr std::uint8_t isProtected = 0x0C;
constexpr std::size_t checksumSize = 8;
// Status (4 bytes), code (10), and the tag, the length and the indicator of the cryptogram (at most 6).
constexpr std::size_t objectsAround = 4 + 10 + 6;

Bytes lengthObject(std::size_t expected, bool isLong) {
    Bytes value;
    if (isLong) {
        value.push_back(static_cast<std::uint8_t>(expected >> 8));
    }
    value.push_back(static_cast<std::uint8_t>(expected));
    return encodedTlv(expectedLength, value);
}

// The objects of an answer, in the only order that they may have.
struct Objects {
    std::optional<Tlv> cryptogram{};
    Tlv status{};
    ByteView authenticated{};
    ByteView code{};
};

std::optional<Objects> objectsOf(ByteView data) {
    const auto all = allTlv(data);
    if (!all || all->size() < 2 || all->size() > 3) {
        return std::nullopt;
    }
    Objects objects;
    auto next = all->begin();
    if (next->tag == cryptogram || next->tag == cryptogramOfObjects) {
        objects.cryptogram = *next++;
    }
    if (all->end() - next != 2 || next[0].tag != processingStatus || next[0].value.size() != 2 ||
        next[1].tag != checksum || next[1].value.size() != checksumSize) {
        return std::nullopt;
    }
    objects.status = next[0];
    objects.code = next[1].value;
    objects.authenticated = data.first(data.size() - next[1].size);
    return objects;
}

} // namespace

void SecureMessaging::count() {
    for (auto& byte : keys_.counter | std::views::reverse) {
        if (++byte != 0) {
            break;
        }
    }
}

Bytes SecureMessaging::initialVector() const {
    if (keys_.cipher == Cipher::tripleDes) {
        return Bytes(blockSize(keys_.cipher));
    }
    const auto vector = encrypted(keys_.cipher, keys_.encryption, {}, keys_.counter);
    return {vector.begin(), vector.end()};
}

// The retail MAC pads the message by itself.
Bytes SecureMessaging::codeOf(ByteView message) const {
    if (keys_.cipher == Cipher::tripleDes) {
        return authenticationCode(keys_.cipher, keys_.authentication, message);
    }
    return authenticationCode(keys_.cipher, keys_.authentication, padded(message, blockSize(keys_.cipher)));
}

Command SecureMessaging::protect(const Command& command) {
    count();
    const auto block = blockSize(keys_.cipher);
    Command guarded{.classByte = static_cast<std::uint8_t>(command.classByte | isProtected),
                    .instruction = command.instruction,
                    .parameter1 = command.parameter1,
                    .parameter2 = command.parameter2};
    Bytes objects;
    if (!command.data.empty()) {
        const bool isOfObjects = command.instruction % 2 == 1;
        Bytes value;
        if (!isOfObjects) {
            value.push_back(isPaddedWithMark);
        }
        append(value, encrypted(keys_.cipher, keys_.encryption, initialVector(), padded(command.data, block)));
        append(objects, encodedTlv(isOfObjects ? cryptogramOfObjects : cryptogram, value));
    }
    if (command.expected > 0) {
        append(objects, lengthObject(command.expected, command.isLong()));
    }
    const Bytes header{guarded.classByte, guarded.instruction, guarded.parameter1, guarded.parameter2};
    auto message = keys_.counter;
    append(message, padded(header, block));
    append(message, objects);
    const auto code = codeOf(message);
    guarded.data = std::move(objects);
    append(guarded.data, encodedTlv(checksum, code));
    guarded.expected = command.isLong() ? 65536 : 256;
    return guarded;
}

std::optional<Answer> SecureMessaging::open(const Answer& received) {
    count();
    const auto objects = objectsOf(received.data);
    if (!objects) {
        return std::nullopt;
    }
    auto message = keys_.counter;
    append(message, objects->authenticated);
    if (!areEqual(codeOf(message), objects->code)) {
        return std::nullopt;
    }
    const auto word = objects->status.value;
    Answer answer{.status = static_cast<std::uint16_t>(word[0] << 8 | word[1])};
    if (answer.status != received.status) {
        return std::nullopt;
    }
    if (objects->cryptogram) {
        auto blocks = objects->cryptogram->value;
        if (objects->cryptogram->tag == cryptogram) {
            if (blocks.empty() || blocks[0] != isPaddedWithMark) {
                return std::nullopt;
            }
            blocks = blocks.subspan(1);
        }
        if (blocks.empty() || blocks.size() % blockSize(keys_.cipher) != 0) {
            return std::nullopt;
        }
        const auto plain = unpadded(decrypted(keys_.cipher, keys_.encryption, initialVector(), blocks));
        if (!plain) {
            return std::nullopt;
        }
        answer.data.assign(plain->begin(), plain->end());
    }
    return answer;
}

std::size_t SecureMessaging::roomIn(std::size_t longest) const {
    const auto block = blockSize(keys_.cipher);
    const auto around = longest <= 256 ? objectsAround - 2 : objectsAround;
    return longest < around + block ? 0 : (longest - around) / block * block - 1;
}

} // namespace kivo::reader
