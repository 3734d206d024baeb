#include "passport/SecureChannel.hpp"

#include <algorithm>
#include <ranges>

namespace kivo::simulator::chip {
namespace {

constexpr std::uint32_t plainTag = 0x85;
constexpr std::uint32_t cryptogramTag = 0x87;
constexpr std::uint32_t expectedTag = 0x97;
constexpr std::uint32_t statusTag = 0x99;
constexpr std::uint32_t codeTag = 0x8E;
constexpr std::uint8_t paddingMark = 1;

/// The size of status, code and the short status behind them: 99 02 xx xx, 8E 08 ..., xx xx.
constexpr std::size_t trailerSize = 4 + 10 + 2;

} // namespace

SecureChannel::SecureChannel(ChipCipher cipher, View secret)
    : SecureChannel{cipher, secret, Bytes(blockSize(cipher))} {}

SecureChannel::SecureChannel(ChipCipher cipher, View secret, View counter)
    : cipher_{cipher}
    , encryptionKey_{derivedKey(cipher, secret, Purpose::encryption)}
    , authenticationKey_{derivedKey(cipher, secret, Purpose::authentication)}
    , counter_{copied(counter)} {}

std::expected<Command, Status> SecureChannel::opened(const Command& secured) {
    count();
    const auto objects = dataObjects(secured.data);
    const auto authentication = objects ? valueOf(*objects, codeTag) : std::nullopt;
    if (!authentication) {
        return std::unexpected{Status::securedObjectsMissing};
    }
    const std::size_t codeObject = authentication->size() + 2;
    const auto covered = View{secured.data}.first(secured.data.size() - std::min(secured.data.size(), codeObject));
    const Bytes header{secured.classByte, secured.instruction, secured.first, secured.second};
    // The code comes last; bytes behind the code would be covered by nothing.
    if (objects->back().tag != codeTag ||
        !areEqual(*authentication, code(joined({padded(header, blockSize(cipher_)), covered})))) {
        return std::unexpected{Status::securedObjectsWrong};
    }
    Command command{.classByte = static_cast<std::uint8_t>(secured.classByte & 0x10U),
                    .instruction = secured.instruction,
                    .first = secured.first,
                    .second = secured.second,
                    .isExtended = secured.isExtended};
    const bool isOdd = (secured.instruction & 1U) != 0;
    if (auto cryptogram = valueOf(*objects, isOdd ? plainTag : cryptogramTag)) {
        if (!isOdd && (cryptogram->empty() || cryptogram->front() != paddingMark)) {
            return std::unexpected{Status::securedObjectsWrong};
        }
        auto plain = plainOf(isOdd ? *cryptogram : cryptogram->subspan(1));
        if (!plain) {
            return std::unexpected{Status::securedObjectsWrong};
        }
        command.data = std::move(*plain);
    }
    if (const auto length = valueOf(*objects, expectedTag)) {
        if (length->empty() || length->size() > 2) {
            return std::unexpected{Status::securedObjectsWrong};
        }
        std::size_t number = 0;
        for (const auto byte : *length) {
            number = number << 8U | byte;
        }
        command.expected = number != 0 ? number : length->size() == 1 ? 0x100 : 0x10000;
    }
    return command;
}

Answer SecureChannel::secured(const Answer& answer, bool isOdd) {
    count();
    Bytes data;
    if (!answer.data.empty()) {
        const auto cryptogram =
            encrypted(cipher_, encryptionKey_, padded(answer.data, blockSize(cipher_)), initialVector());
        data = isOdd ? object(plainTag, cryptogram) : object(cryptogramTag, joined({Bytes{paddingMark}, cryptogram}));
    }
    const auto covered = joined({data, object(statusTag, bigEndian(static_cast<std::uint16_t>(answer.status), 2))});
    return {joined({covered, object(codeTag, code(covered))}), answer.status};
}

std::size_t SecureChannel::room(std::size_t most) const {
    // Tag, length of up to three bytes, and the mark of padding come before the cryptogram.
    const std::size_t head = most > 0x100 ? 5 : 4;
    const auto blocks = most > trailerSize + head ? (most - trailerSize - head) / blockSize(cipher_) : 0;
    return blocks == 0 ? 0 : blocks * blockSize(cipher_) - 1;
}

Bytes SecureChannel::encryptedOnce(View data) const {
    const Bytes ones(blockSize(cipher_), 0xFF);
    return encrypted(cipher_, encryptionKey_, padded(data, blockSize(cipher_)),
                     encrypted(cipher_, encryptionKey_, ones));
}

void SecureChannel::count() {
    for (auto& byte : counter_ | std::views::reverse) {
        if (++byte != 0) {
            break;
        }
    }
}

Bytes SecureChannel::initialVector() const {
    return cipher_ == ChipCipher::tripleDes ? Bytes(blockSize(cipher_)) : encrypted(cipher_, encryptionKey_, counter_);
}

Bytes SecureChannel::code(View data) const {
    const auto all = joined({counter_, data});
    return authenticationCode(cipher_, authenticationKey_,
                              cipher_ == ChipCipher::tripleDes ? all : padded(all, blockSize(cipher_)));
}

std::optional<Bytes> SecureChannel::plainOf(View cryptogram) const {
    if (cryptogram.empty() || cryptogram.size() % blockSize(cipher_) != 0) {
        return std::nullopt;
    }
    return unpadded(decrypted(cipher_, encryptionKey_, cryptogram, initialVector()));
}

} // namespace kivo::simulator::chip
