#include "card/BoundedSources.hpp"
#include "card/Capabilities.hpp"
#include "card/Command.hpp"
#include "reader/ScriptedCard.hpp"
#include "reader/Vectors.hpp"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

namespace kivo::reader {
namespace {

using namespace std::chrono_literals;

TEST(Command, HasTheShortestForm) {
    const struct {
        Command command;
        std::size_t size;
        Bytes begin;
        Bytes end;
    } rows[] = {
        {{.instruction = 0x84}, 4, {0x00, 0x84, 0x00, 0x00}, {}},
        {{.instruction = 0x84, .expected = 8}, 5, {0x00, 0x84, 0x00, 0x00, 0x08}, {}},
        {{.instruction = 0xB0, .expected = 256}, 5, {0x00, 0xB0, 0x00, 0x00, 0x00}, {}},
        {{.instruction = 0xB0, .expected = 257}, 7, {0x00, 0xB0, 0x00, 0x00, 0x00, 0x01, 0x01}, {}},
        {{.instruction = 0xB0, .expected = 65536}, 7, {0x00, 0xB0, 0x00, 0x00, 0x00, 0x00, 0x00}, {}},
        {{.classByte = 0x10, .data = Bytes(255)}, 260, {0x10, 0x00, 0x00, 0x00, 0xFF}, {}},
        {{.data = Bytes(255), .expected = 256}, 261, {0x00, 0x00, 0x00, 0x00, 0xFF}, {0x00, 0x00}},
        {{.data = Bytes(256), .expected = 1}, 265, {0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00}, {0x00, 0x00, 0x01}},
        {{.data = Bytes(2), .expected = 300}, 11, {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02}, {0x01, 0x2C}},
    };

    for (const auto& row : rows) {
        const auto bytes = encoded(row.command);
        EXPECT_EQ(bytes.size(), row.size);
        EXPECT_EQ((Bytes{bytes.begin(), bytes.begin() + std::ssize(row.begin)}), row.begin);
        EXPECT_EQ((Bytes{bytes.end() - std::ssize(row.end), bytes.end()}), row.end);
    }
}

TEST(Exchange, FetchesWhatTheCardKeepsReady) {
    const auto later = Channel::Clock::now() + 1h;
    ScriptedCard card{{{{0x00, 0xB0, 0x00, 0x00, 0x00}, {0x6C, 0x05}},
                       {{0x00, 0xB0, 0x00, 0x00, 0x05}, {1, 2, 0x61, 0x00}},
                       {{0x00, 0xC0, 0x00, 0x00, 0x00}, {3, 0x61, 0x02}},
                       {{0x00, 0xC0, 0x00, 0x00, 0x02}, {4, 5, 0x62, 0x82}}}};
    const auto answer = exchange(card, Bytes{0x00, 0xB0, 0x00, 0x00, 0x00}, later);
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->data, (Bytes{1, 2, 3, 4, 5}));
    EXPECT_EQ(answer->status, 0x6282);

    ScriptedCard withData{{{{0x00, 0xA4, 0x04, 0x0C, 0x01, 0xA0, 0x00}, {0x6C, 0x10}},
                           {{0x00, 0xA4, 0x04, 0x0C, 0x01, 0xA0, 0x10}, done}}};
    EXPECT_EQ(exchange(withData, Bytes{0x00, 0xA4, 0x04, 0x0C, 0x01, 0xA0, 0x00}, later)->status, 0x9000);
}

TEST(Exchange, EndsWithACardThatNeverDoes) {
    const auto later = Channel::Clock::now() + 1h;

    const struct {
        Bytes answer;
        Channel::Clock::time_point until;
        int most;
        CardError error;
    } rows[] = {
        {{0x61, 0x00}, later, 301, CardError::broken},
        {joined({Bytes(60000), {0x61, 0x00}}), later, 2, CardError::broken},
        {{0x61, 0x00}, Channel::Clock::now(), 1, CardError::gone},
        {{}, later, 1, CardError::broken},
        {{0x90}, later, 1, CardError::broken},
    };

    for (const auto& row : rows) {
        int commands = 0;
        PlayedCard card{[&](ByteView) -> std::expected<Bytes, CardError> {
            ++commands;
            return row.answer;
        }};
        EXPECT_EQ(exchange(card, Bytes{0, 0xB0, 0, 0, 0}, row.until).error(), row.error);
        EXPECT_LE(commands, row.most);
    }
    ScriptedCard otherAgain{{{{0, 0xB0, 0, 0, 0}, {0x6C, 0x01}}, {{0, 0xB0, 0, 0, 1}, {0x6C, 0x02}}}};
    EXPECT_EQ(exchange(otherAgain, Bytes{0, 0xB0, 0, 0, 0}, later)->status, 0x6C02);
}

TEST(Capabilities, ComeFromTheAnswerToResetAndAFile) {
    const auto passport = bytesOfHex("3b8980018091e165d0004600000e"); // no capabilities among the historical bytes
    const auto info = bytesOfHex("7f660802020400020207ff");           // 1024 and 2047 bytes

    const struct {
        Bytes reset;
        Bytes info;
        bool isLong;
        std::size_t longestAnswer;
    } rows[] = {
        {passport, {}, false, 256},
        {bytesOfHex("3b8680018073000040ff"), {}, true, 4096},
        {bytesOfHex("3b8580018073000040"), {}, true, 4096},
        {passport, info, true, 2047},
        {passport, bytesOfHex("4703000040"), true, 4096},
        {passport, bytesOfHex("470300004047"), true, 4096},
        {passport, bytesOfHex("7f660802020010020200ff"), false, 256},
        {passport, bytesOfHex("7f660802020400020207"), false, 256},
        {passport, bytesOfHex("7f660e0205ffffffffff0205ffffffffff"), true, 65536},
        {bytesOfHex("3bf81800008131fe450031b873f74001"), {}, false, 256}, // no compact objects at the start
        {bytesOfHex("3bf51800008131fe4580730000c0"), {}, true, 4096},
        {{0x3B}, {}, false, 256},
        {{0x3B, 0xFF, 0xFF}, {}, false, 256},
        {bytesOfHex("3b858001807f"), {}, false, 256},
    };

    for (const auto& row : rows) {
        const auto found = capabilitiesWith(capabilitiesIn(historicalBytesOf(row.reset)), row.info);
        EXPECT_EQ(found.takesLongMessages, row.isLong) << testing::PrintToString(row.reset);
        EXPECT_EQ(found.longestAnswer, row.longestAnswer) << testing::PrintToString(row.info);
    }
}

// A socket that listens on loopback, and what is done with the first connection.
class Listener {
public:
    explicit Listener(std::function<void(int)> serve)
        : descriptor_{socket(AF_INET, SOCK_STREAM, 0)} {
        sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(descriptor_, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(descriptor_, 1), 0);
        EXPECT_EQ(getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size), 0);
        port_ = ntohs(address.sin_port);
        thread_ = std::jthread{[this, serve = std::move(serve)] {
            const int connection = accept(descriptor_, nullptr, nullptr);
            serve(connection);
            close(connection);
        }};
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    ~Listener() {
        thread_.join();
        close(descriptor_);
    }

    std::uint16_t port() const { return port_; }

private:
    int descriptor_;
    std::uint16_t port_ = 0;
    std::jthread thread_{};
};

TEST(SocketCards, CarryCommandsUntilTheSocketCloses) {
    const auto message = joined({{0x01, 0x02}, Bytes(256, 0xAB), done});
    for (const std::size_t sent : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{200}, message.size()}) {
        const Listener listener{[&](int connection) {
            Bytes forTheReader(6);
            EXPECT_EQ(recv(connection, forTheReader.data(), forTheReader.size(), MSG_WAITALL), 6);
            EXPECT_EQ(forTheReader, (Bytes{0x00, 0x01, 0x02, 0x00, 0x01, 0x04}));
            const Bytes reset{0x00, 0x09, 0x3B, 0x85, 0x80, 0x01, 0x80, 0x73, 0x00, 0x00, 0x40};
            EXPECT_EQ(send(connection, reset.data(), reset.size(), MSG_NOSIGNAL), std::ssize(reset));
            Bytes command(7);
            EXPECT_EQ(recv(connection, command.data(), command.size(), MSG_WAITALL), 7);
            EXPECT_EQ(command, (Bytes{0x00, 0x05, 0x00, 0x84, 0x00, 0x00, 0x08}));
            EXPECT_EQ(send(connection, message.data(), sent, MSG_NOSIGNAL), static_cast<ssize_t>(sent));
        }};
        const auto source = cardsBehindSocket("localhost", listener.port());
        const auto card = source->waitForCard(10s, {});
        ASSERT_TRUE(card);
        EXPECT_EQ((*card)->historicalBytes(), (Bytes{0x80, 0x73, 0x00, 0x00, 0x40}));
        const Bytes command{0x00, 0x84, 0x00, 0x00, 0x08};
        const auto answer = (*card)->transmit(command);
        EXPECT_EQ(answer.has_value(), sent == message.size()) << sent;
        EXPECT_EQ((*card)->transmit(command).error(), CardError::gone);
    }
}

TEST(SocketCards, GiveACardUpThatNeverAnswers) {
    const Listener listener{[](int connection) {
        Bytes received(6 + 6);
        EXPECT_EQ(recv(connection, received.data(), 6, MSG_WAITALL), 6);
        EXPECT_EQ(send(connection, "\0\1\x3B", 3, MSG_NOSIGNAL), 3);
        // The command, and then the end of the connection.
        EXPECT_EQ(recv(connection, received.data(), received.size(), MSG_WAITALL), 7);
    }};
    auto card = cardsBehindSocket("127.0.0.1", listener.port(), 50ms)->waitForCard(10s, {});
    ASSERT_TRUE(card);
    EXPECT_EQ((*card)->transmit(Bytes{0x00, 0x84, 0x00, 0x00, 0x08}).error(), CardError::gone);
    card->reset();
}

TEST(SocketCards, WaitUntilThePatienceEndsOrAStopComes) {
    // Nothing listens at a port that is bound only.
    const int bound = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(bound, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(getsockname(bound, reinterpret_cast<sockaddr*>(&address), &size), 0);
    const auto source = cardsBehindSocket("127.0.0.1", ntohs(address.sin_port));
    EXPECT_EQ(source->waitForCard(1ms, {}).error(), CardError::noCard);
    std::stop_source stop;
    std::jthread stopper{[&] { stop.request_stop(); }};
    EXPECT_EQ(source->waitForCard(1h, stop.get_token()).error(), CardError::stopped);
    EXPECT_EQ(source->waitForCard(1h, stop.get_token()).error(), CardError::stopped);
    close(bound);
}

} // namespace
} // namespace kivo::reader
