#include "card/BoundedSources.hpp"
#include "reader/OwnCardService.hpp"
#include "reading/ChipWork.hpp"
#include "support/Eventually.hpp"

#include <kivo/simulator/VirtualReader.hpp>

#include <gtest/gtest.h>

#include <future>

namespace kivo::reader {
namespace {

using namespace std::chrono_literals;
using simulator::Passport;
using simulator::PassportConfiguration;
using simulator::VirtualReader;

const Bytes readFirstByte{0x00, 0xB0, 0x00, 0x00, 0x01};

/// The cards of a card service that is the test's own.
class SystemCards : public testing::Test {
protected:
    void SetUp() override {
        auto started = test::startedCardService();
        if (!started) {
            GTEST_SKIP() << started.error();
        }
        service = *std::move(started);
    }

    static void expectReading(CardSource& source, const Passport& passport) {
        const ChipReadingOrder order{.key = {.documentNumber = passport.documentNumber(),
                                             .dateOfBirth = passport.dateOfBirth(),
                                             .dateOfExpiry = passport.dateOfExpiry()},
                                     .groups = {DocumentFile::dg1, DocumentFile::dg2}};
        const auto document = documentRead(source, order, {}, [](const auto&) {});
        ASSERT_TRUE(document) << static_cast<int>(document.error());
        EXPECT_EQ(document->files.at(DocumentFile::dg2), passport.file("DG2"));
        EXPECT_EQ(document->verdict.chipIsGenuine, Proof::proven);
    }

    /// Whether the service learns that no card is left.
    bool becomesEmpty() const {
        return test::eventually([&] { return !source->waitForCard(0ms, {}); });
    }

    std::unique_ptr<simulator::CardService> service;
    std::shared_ptr<CardSource> source = systemCards();
    std::shared_ptr<Passport> passport = std::make_shared<Passport>();
};

TEST_F(SystemCards, ReadCardsOfBothProtocolsInEitherSlot) {
    const struct {
        const char* what;
        int slot;
        PassportConfiguration configuration;
    } rows[] = {
        {"T=1 in the second slot", 1, {}},
        {"T=0, PACE", 0, {.protocol = simulator::CardProtocol::t0}},
        {"T=0, a long key",
         1,
         {.pace = {}, .chipAuthentication = {{.domainParameters = 2}}, .protocol = simulator::CardProtocol::t0}},
    };

    EXPECT_EQ(source->readers().size(), 2U);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_TRUE(becomesEmpty());
        const auto card = std::make_shared<Passport>(row.configuration);
        const VirtualReader reader{card, *service, row.slot};
        expectReading(*source, *card);
    }
}

TEST_F(SystemCards, OutlastARestartOfTheServiceAndReadersThatComeAndGo) {
    ASSERT_TRUE(service->restart(false));
    EXPECT_TRUE(source->readers().empty());
    EXPECT_EQ(source->waitForCard(0ms, {}).error(), CardError::noReader);

    std::promise<void> waits;
    auto reading = std::async(std::launch::async, [&] {
        const ChipReadingOrder order{.key = {.cardAccessNumber = passport->cardAccessNumber()}};
        return documentRead(*source, order, {}, [&, isFirst = true](const auto& progress) mutable {
            if (std::exchange(isFirst, false)) {
                EXPECT_EQ(progress.step, ChipProgress::Step::waitingForReader);
                waits.set_value();
            }
        });
    });
    waits.get_future().wait();
    const VirtualReader reader{passport, *service};
    ASSERT_TRUE(service->restart());
    EXPECT_TRUE(reading.get());

    const auto card = source->waitForCard(20s, {});
    ASSERT_TRUE(card);
    EXPECT_TRUE((*card)->transmit(readFirstByte));
    ASSERT_TRUE(service->restart(false));
    EXPECT_EQ((*card)->transmit(readFirstByte).error(), CardError::gone);
    std::stop_source stop;
    auto waiting = std::async(std::launch::async, [&] { return source->waitForCard(1h, stop.get_token()); });
    service = nullptr;
    stop.request_stop();
    EXPECT_EQ(waiting.get().error(), CardError::stopped);
    EXPECT_FALSE(source->isAvailable());
    EXPECT_EQ(systemCards()->waitForCard(1h, {}).error(), CardError::noService);
}

TEST_F(SystemCards, GiveACardUpThatNeverAnswers) {
    passport->setFault(simulator::ChipFault::silent());
    const VirtualReader reader{passport, *service};
    const auto silent = systemCards(50ms)->waitForCard(20s, {});
    ASSERT_TRUE(silent);
    EXPECT_EQ((*silent)->transmit(readFirstByte).error(), CardError::gone);
    EXPECT_EQ((*silent)->transmit(Bytes{0x00, 0x84, 0x00, 0x00, 0x08}).error(), CardError::gone);

    // Neither the other slot nor the same card later is held up.
    const auto other = std::make_shared<Passport>();
    auto otherReader = std::make_optional<VirtualReader>(other, *service, 1);
    expectReading(*source, *other);
    otherReader.reset();
    passport->setFault(std::nullopt);
    passport->takeAway();
    EXPECT_TRUE(becomesEmpty());
    passport->layDown();
    expectReading(*source, *passport);
}

} // namespace
} // namespace kivo::reader
