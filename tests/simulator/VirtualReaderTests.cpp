#include "support/Chip.hpp"
#include "support/Eventually.hpp"
#include "support/TestSocket.hpp"

#include <kivo/simulator/CardService.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <gtest/gtest.h>
#include <poll.h>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using test::fromHex;
using test::hex;

const std::string selectApplication = "00a4040c07a0000002471001";

/// The other side of a card: a driver or a client, which sends messages with their lengths.
class Side {
public:
    explicit Side(test::TestSocket socket)
        : socket_{std::move(socket)} {}

    /// Sends a message, and returns the answer; "closed" where the card is gone.
    std::string ask(const std::string& message) {
        tell(message);
        const auto head = socket_.receive(2);
        return head.size() < 2 ? "closed" : hex(socket_.receive(static_cast<std::size_t>(head[0] << 8 | head[1])));
    }

    void tell(const std::string& message) {
        const auto bytes = fromHex(message);
        socket_.send({static_cast<std::uint8_t>(bytes.size() >> 8), static_cast<std::uint8_t>(bytes.size())});
        socket_.send(bytes);
    }

    bool isClosed() { return socket_.receive(1).empty(); }

private:
    test::TestSocket socket_;
};

// The slot once the card is in it: until the driver has asked in vain, the card service takes a card for the one
// before.
Side slotWithCard(const test::TestListener& driver) {
    Side powered{driver.accept()};
    powered.tell("01");
    EXPECT_TRUE(powered.isClosed()) << "not yet asked whether there is a card";
    EXPECT_EQ(Side{driver.accept()}.ask("04"), "closed");
    return Side{driver.accept()};
}

TEST(VirtualReader, SpeaksAsTheDriverDoesAndComesBackWhenTheCardIsLaidDownAgain) {
    test::TestListener driver;
    const auto passport = std::make_shared<Passport>();
    const VirtualReader reader{passport, driver.port()};
    {
        auto slot = slotWithCard(driver);
        EXPECT_EQ(slot.ask("04"), hex(passport->answerToReset()));
        EXPECT_TRUE(reader.waitForDriver(10s));
        slot.tell("01");
        EXPECT_EQ(slot.ask(selectApplication), "9000");
        EXPECT_EQ(slot.ask("0084000008").size(), 20U);
        slot.tell("02");
        EXPECT_EQ(slot.ask("0084000008"), "6985") << "a reset forgets the selection";
        passport->takeAway();
        EXPECT_TRUE(slot.isClosed());
    }
    passport->layDown();
    auto slot = slotWithCard(driver);
    EXPECT_EQ(slot.ask("04"), hex(passport->answerToReset()));
}

TEST(VirtualReader, EndsWhileAChipIsSilent) {
    test::TestListener driver;
    PassportConfiguration configuration;
    configuration.fault = ChipFault::silent();
    const auto passport = std::make_shared<Passport>(configuration);
    auto reader = std::make_unique<VirtualReader>(passport, driver.port());
    auto slot = slotWithCard(driver);
    slot.tell("00b0820000");
    reader.reset();
    EXPECT_TRUE(slot.isClosed());
    EXPECT_TRUE(passport->isOnReader());
}

TEST(CardSocket, ServesOneClientAfterTheOtherAndNobodyWithoutACard) {
    const auto passport = std::make_shared<Passport>();
    const CardSocket socket{passport};
    {
        Side first{test::connectedTo(socket.port())};
        EXPECT_EQ(first.ask(selectApplication), "9000");
    }
    Side second{test::connectedTo(socket.port())};
    EXPECT_EQ(second.ask("0084000008"), "6985") << "the card begins anew with each client";
    // A message of no bytes is none.
    second.tell("");
    EXPECT_TRUE(second.isClosed());
    passport->takeAway();
    EXPECT_TRUE(test::eventually([&] { return !test::canConnectTo(socket.port()); }));
    passport->layDown();
    EXPECT_TRUE(test::eventually([&] { return test::canConnectTo(socket.port()); }));
}

TEST(CardSocket, EndsWhileItsClientReadsNothing) {
    auto socket = std::make_unique<CardSocket>(std::make_shared<Passport>());
    const auto client = test::connectedTo(socket->port());
    const auto request = fromHex("000104"); // for the answer to reset
    pollfd room{.fd = client.descriptor(), .events = POLLOUT, .revents = 0};
    for (std::size_t sent = 0; poll(&room, 1, 200) > 0;) {
        const auto at = sent % request.size();
        sent += static_cast<std::size_t>(send(room.fd, request.data() + at, request.size() - at, MSG_NOSIGNAL));
    }
    socket.reset();
}

TEST(CardService, RunsADaemonOfItsOwnWhoseDriverTakesACard) {
    const auto service = CardService::start();
    if (!service) {
        GTEST_SKIP() << service.error();
    }
    const auto passport = std::make_shared<Passport>();
    const VirtualReader reader{passport, **service};
    EXPECT_TRUE(reader.waitForDriver(20s));
    EXPECT_TRUE(std::filesystem::is_socket((*service)->socket()));
}

} // namespace
} // namespace kivo::simulator
