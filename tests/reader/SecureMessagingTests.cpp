#include "messaging/SecureMessaging.hpp"

#include "messaging/Channel.hpp"
#include "reader/ScriptedCard.hpp"
#include "reader/Vectors.hpp"

#include <gtest/gtest.h>

namespace kivo::reader {
namespace {

ChannelKeys keysOf(Cipher cipher, const Bytes& encryption, const Bytes& authentication, Bytes counter) {
    return {.cipher = cipher,
            .encryption = {encryption.begin(), encryption.end()},
            .authentication = {authentication.begin(), authentication.end()},
            .counter = std::move(counter)};
}

Command commandOf(const Bytes& bytes) {
    Command command{.classByte = bytes[0], .instruction = bytes[1], .parameter1 = bytes[2], .parameter2 = bytes[3]};
    if (bytes.size() == 5) {
        command.expected = bytes[4];
    } else {
        command.data.assign(bytes.begin() + 5, bytes.end());
    }
    return command;
}

Answer answerOf(const Bytes& bytes) {
    return {.data = {bytes.begin(), bytes.end() - 2},
            .status = static_cast<std::uint16_t>(bytes[bytes.size() - 2] << 8 | bytes.back())};
}

// The chip's side of an answer with these objects.
Answer authenticated(ChannelKeys keys, Bytes objects, std::uint16_t status = 0x9000) {
    keys.counter.back() = static_cast<std::uint8_t>(keys.counter.back() + 2);
    const auto message = joined({keys.counter, objects});
    const auto block = blockSize(keys.cipher);
    const auto code = authenticationCode(keys.cipher, keys.authentication,
                                         block == 8 ? Secret{message.begin(), message.end()} : padded(message, block));
    return {.data = joined({objects, {0x8E, 0x08}, code}), .status = status};
}

TEST(SecureMessaging, GoesAlongWithThePublishedExample) {
    const auto example = vectors("bac")["d4_secure_messaging"];
    SecureMessaging messaging{keysOf(Cipher::tripleDes, bytesOf(example["ks_enc"]), bytesOf(example["ks_mac"]),
                                     bytesOf(example["ssc_start"]))};
    for (const auto& step : example["steps"]) {
        EXPECT_EQ(encoded(messaging.protect(commandOf(bytesOf(step["unprotected_command"])))),
                  bytesOf(step["protected_command"]));
        const auto answer = messaging.open(answerOf(bytesOf(step["protected_response"])));
        ASSERT_TRUE(answer) << step["name"];
        EXPECT_EQ(answer->status, 0x9000);
        EXPECT_EQ(answer->data, step.contains("decrypted_data") ? bytesOf(step["decrypted_data"]) : Bytes{});
        EXPECT_EQ(messaging.keys().counter, bytesOf(step["ssc_after"]));
    }
}

TEST(SecureMessaging, EnciphersAndAuthenticatesWithAesAsPublished) {
    const auto file = vectors("pace");
    for (const auto& example : file["examples"]) {
        if (!example.contains("secure_messaging_fragments")) {
            continue;
        }
        const auto& encryption = example["secure_messaging_fragments"][0];
        const auto& mac = example["secure_messaging_fragments"][1];
        const auto keys = keysOf(Cipher::aes128, bytesOf(example["ks_enc"]), bytesOf(example["ks_mac"]), Bytes(16));
        SecureMessaging messaging{keys};
        const auto command = messaging.protect({.instruction = 0x22, .data = bytesOf(encryption["data"])});
        const auto cryptogram = bytesOf(encryption["cryptogram"]);
        EXPECT_EQ((Bytes{command.data.begin() + 3, command.data.begin() + 3 + std::ssize(cryptogram)}), cryptogram);
        EXPECT_TRUE(messaging.open(
            {.data = joined({bytesOf(mac["data"]), {0x8E, 0x08}, bytesOf(mac["mac"])}), .status = 0x9000}));
    }
}

TEST(SecureMessaging, ReachesAllLengthsThatItPromises) {
    for (const auto cipher : {Cipher::tripleDes, Cipher::aes256}) {
        const Bytes key(keySize(cipher), 0x11);
        for (const std::size_t longest : {256U, 1024U, 65536U}) {
            SecureMessaging messaging{keysOf(cipher, key, key, Bytes(blockSize(cipher)))};
            const auto room = messaging.roomIn(longest);
            // A command carries the same objects but for one of status, and shows how long the cryptogram is.
            const auto command = messaging.protect({.data = Bytes(room, 1)});
            EXPECT_LE(command.data.size() + 4, longest);
            EXPECT_GT(command.data.size() + 4 + blockSize(cipher) + 4, longest);
        }
    }
}

TEST(SecureMessaging, RefusesAnswersThatBreakARule) {
    const Bytes key(16, 0x42);
    for (const auto cipher : {Cipher::tripleDes, Cipher::aes128}) {
        const auto keys = keysOf(cipher, key, key, Bytes(blockSize(cipher)));
        auto later = keys;
        later.counter.back() = 2;
        const auto vector = cipher == Cipher::tripleDes ? Secret(8) : encrypted(cipher, key, {}, later.counter);
        const auto cryptogramOf = [&](const Bytes& blocks) {
            const auto value = encrypted(cipher, key, vector, blocks);
            Bytes object{0x87, static_cast<std::uint8_t>(1 + value.size()), 0x01};
            object.insert(object.end(), value.begin(), value.end());
            return object;
        };
        Bytes content(blockSize(cipher), 0);
        content[0] = 0x07;
        content[1] = 0x80;
        const auto good = cryptogramOf(content);
        const Bytes done{0x99, 0x02, 0x90, 0x00};
        auto otherIndicator = good;
        otherIndicator[2] = 0x02;
        auto cutOff = good;
        cutOff.pop_back();
        cutOff[1]--;
        const auto authentic = authenticated(keys, joined({good, done}));
        auto forged = authentic;
        forged.data[4] ^= 1;
        auto withoutCode = authentic;
        withoutCode.data.erase(withoutCode.data.end() - 10, withoutCode.data.end());
        auto withMore = authentic;
        withMore.data.insert(withMore.data.end(), {0x97, 0x01, 0x00});
        auto shortCode = authentic;
        shortCode.data.pop_back();
        shortCode.data[shortCode.data.size() - 8]--;

        const struct {
            const char* what;
            Answer answer;
            std::optional<Bytes> data;
        } rows[] = {
            {"authentic", authentic, Bytes{0x07}},
            {"status only", authenticated(keys, done), Bytes{}},
            {"an error", authenticated(keys, {0x99, 0x02, 0x6A, 0x82}, 0x6A82), Bytes{}},
            {"one bit changed", forged, std::nullopt},
            {"no code", withoutCode, std::nullopt},
            {"an object behind the code", withMore, std::nullopt},
            {"a short code", shortCode, std::nullopt},
            {"no objects", {.data = {}, .status = 0x9000}, std::nullopt},
            {"wrong order", authenticated(keys, joined({done, good})), std::nullopt},
            {"twice the status", authenticated(keys, joined({done, done})), std::nullopt},
            {"no status", authenticated(keys, good), std::nullopt},
            {"another status outside", authenticated(keys, joined({good, done}), 0x6282), std::nullopt},
            {"another indicator", authenticated(keys, joined({otherIndicator, done})), std::nullopt},
            {"no whole blocks", authenticated(keys, joined({cutOff, done})), std::nullopt},
            {"no padding", authenticated(keys, joined({cryptogramOf(Bytes(blockSize(cipher), 0x00)), done})),
             std::nullopt},
            {"empty cryptogram", authenticated(keys, joined({{0x87, 0x01, 0x01}, done})), std::nullopt},
        };

        for (const auto& row : rows) {
            SecureMessaging messaging{keys};
            messaging.protect({.expected = 16});
            const auto answer = messaging.open(row.answer);
            EXPECT_EQ(answer.transform([](const auto& opened) { return opened.data; }), row.data) << row.what;
        }
        // An authentic answer is good once.
        SecureMessaging messaging{keys};
        messaging.protect({.expected = 16});
        EXPECT_TRUE(messaging.open(authentic));
        messaging.protect({.expected = 16});
        EXPECT_FALSE(messaging.open(authentic));
    }
}

TEST(Channel, CarriesNothingAfterABrokenAnswer) {
    int commands = 0;
    PlayedCard card{[&](ByteView) -> std::expected<Bytes, CardError> {
        ++commands;
        return Bytes{0x69, 0x88};
    }};
    Channel channel{card, Channel::Clock::now() + std::chrono::hours{1}, {}};
    EXPECT_EQ(channel.send({.instruction = 0x84, .expected = 8})->status, 0x6988);
    channel.protect(channelKeys(Bytes(16), Cipher::aes128));
    EXPECT_EQ(channel.send({.instruction = 0x84, .expected = 8}).error(), ChipFault::broken);
    EXPECT_EQ(channel.send({.instruction = 0x84, .expected = 8}).error(), ChipFault::broken);
    EXPECT_EQ(commands, 2);
}

} // namespace
} // namespace kivo::reader
