#include "FuzzInput.hpp"
#include "access/SecurityInfos.hpp"
#include "card/Capabilities.hpp"
#include "card/Command.hpp"
#include "crypto/KeyAgreement.hpp"
#include "messaging/SecureMessaging.hpp"
#include "tlv/Tlv.hpp"

#include <algorithm>

using namespace kivo::reader;

namespace {

/// Answers with the parts of the input, each behind a byte that gives its length.
class InputCard final : public Card {
public:
    explicit InputCard(ByteView input)
        : input_{input} {}

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        kivo::fuzz::require(command.size() >= 4 && command.size() <= 65544);
        if (input_.empty()) {
            return std::unexpected{CardError::gone};
        }
        const auto count = std::min<std::size_t>(input_[0], input_.size() - 1);
        const auto part = input_.subspan(1, count);
        input_ = input_.subspan(1 + count);
        return Bytes{part.begin(), part.end()};
    }

private:
    ByteView input_;
};

void openProtected(ByteView objects, Cipher cipher) {
    const Secret key(keySize(cipher), 0x42);
    SecureMessaging messaging{
        {.cipher = cipher, .encryption = key, .authentication = key, .counter = Bytes(blockSize(cipher))}};
    messaging.protect({.expected = 256});
    // The code is right, so that the rules behind it are reached.
    Bytes message(blockSize(cipher));
    message.back() = 2;
    message.insert(message.end(), objects.begin(), objects.end());
    const auto blocks = padded(message, blockSize(cipher));
    const auto code =
        authenticationCode(cipher, key, cipher == Cipher::tripleDes ? ByteView{message} : ByteView{blocks});
    Answer received{.data = {objects.begin(), objects.end()}, .status = 0x9000};
    const auto checksum = encodedTlv(0x8E, code);
    received.data.insert(received.data.end(), checksum.begin(), checksum.end());
    const auto answer = messaging.open(received);
    kivo::fuzz::require(!answer || (answer->status == 0x9000 && answer->data.size() < received.data.size()));
}

} // namespace

/// What a chip answers: plain, protected, in parts, and what its files say of its protocols.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView input{data, size};
    openProtected(input, Cipher::tripleDes);
    openProtected(input, Cipher::aes128);
    if (const auto infos = securityInfosIn(input)) {
        for (const auto& key : infos->keys) {
            const auto found = staticKeyIn(key.subjectPublicKeyInfo);
            kivo::fuzz::require(!found || !found->publicKey.empty());
        }
    }
    const auto capabilities = capabilitiesWith(capabilitiesIn(historicalBytesOf(input)), input);
    kivo::fuzz::require(capabilities.longestAnswer >= 256 && capabilities.longestAnswer <= 65536);
    InputCard card{input};
    const auto later = std::chrono::steady_clock::now() + std::chrono::hours{1};
    const auto answer = exchange(card, Bytes{0x00, 0xB0, 0x00, 0x00, 0x00}, later);
    kivo::fuzz::require(!answer || answer->data.size() <= 65536);
    return 0;
}
