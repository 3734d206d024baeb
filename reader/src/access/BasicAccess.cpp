#include "access/BasicAccess.hpp"

#include <algorithm>

namespace kivo::reader {
namespace {

constexpr auto cipher = Cipher::tripleDes;
constexpr std::size_t challengeSize = 8;
constexpr std::size_t keyPartSize = 16;
constexpr std::size_t codeSize = 8;
constexpr std::size_t messageSize = 2 * challengeSize + keyPartSize;

ByteView keySeedOf(const Password& password) {
    return ByteView{password.value}.first(std::min<std::size_t>(password.value.size(), keyPartSize));
}

// The chip answers the encrypted challenges only if it takes the terminal for one that knows the password.
std::expected<void, ChipFault> faultOf(std::uint16_t word) {
    if (word == status::unknownInstruction || word == status::notSupported) {
        return std::unexpected{ChipFault::unsupported};
    }
    return std::unexpected{ChipFault::denied};
}

} // namespace

std::expected<void, ChipFault> openByBasicAccess(Channel& channel, const Password& password,
                                                 const Randomness& randomness) {
    const auto seed = keySeedOf(password);
    const auto encryption = derivedKey(seed, KeyPurpose::encryption, cipher);
    const auto authentication = derivedKey(seed, KeyPurpose::authentication, cipher);

    const auto challenge = channel.send({.instruction = 0x84, .expected = challengeSize});
    if (!challenge) {
        return std::unexpected{challenge.error()};
    }
    if (challenge->status != status::success) {
        return std::unexpected{ChipFault::unsupported};
    }
    if (challenge->data.size() != challengeSize) {
        return std::unexpected{ChipFault::broken};
    }

    Secret own(challengeSize + keyPartSize);
    randomness(own);
    const auto ownChallenge = ByteView{own}.first(challengeSize);
    const auto ownKeyPart = ByteView{own}.subspan(challengeSize);
    Secret message{ownChallenge.begin(), ownChallenge.end()};
    message.insert(message.end(), challenge->data.begin(), challenge->data.end());
    message.insert(message.end(), ownKeyPart.begin(), ownKeyPart.end());
    const auto cryptogram = encrypted(cipher, encryption, {}, message);
    const auto code = authenticationCode(cipher, authentication, cryptogram);
    Command command{
        .instruction = 0x82, .data = {cryptogram.begin(), cryptogram.end()}, .expected = messageSize + codeSize};
    command.data.insert(command.data.end(), code.begin(), code.end());

    const auto answer = channel.send(command);
    if (!answer) {
        return std::unexpected{answer.error()};
    }
    if (answer->status != status::success) {
        return faultOf(answer->status);
    }
    if (answer->data.size() != messageSize + codeSize) {
        return std::unexpected{ChipFault::broken};
    }
    const auto theirCryptogram = ByteView{answer->data}.first(messageSize);
    if (!areEqual(authenticationCode(cipher, authentication, theirCryptogram), ByteView{answer->data}.last(codeSize))) {
        return std::unexpected{ChipFault::broken};
    }
    const auto theirs = decrypted(cipher, encryption, {}, theirCryptogram);
    const auto theirKeyPart = ByteView{theirs}.last(keyPartSize);
    if (!areEqual(ByteView{theirs}.first(challengeSize), challenge->data) ||
        !areEqual(ByteView{theirs}.subspan(challengeSize, challengeSize), ownChallenge)) {
        return std::unexpected{ChipFault::broken};
    }

    Secret common(keyPartSize);
    std::ranges::transform(ownKeyPart, theirKeyPart, common.begin(), std::bit_xor{});
    auto keys = channelKeys(common, cipher);
    std::ranges::copy(ByteView{challenge->data}.last(challengeSize / 2), keys.counter.begin());
    std::ranges::copy(ownChallenge.last(challengeSize / 2), keys.counter.begin() + challengeSize / 2);
    channel.protect(std::move(keys));
    return {};
}

} // namespace kivo::reader
