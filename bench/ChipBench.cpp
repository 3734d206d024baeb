// The time in which DG1, DG2 (20 KiB), SOD and the chip's proof are read, beside the time in which the same bytes go to
// the same chip and back.
#include "Measuring.hpp"
#include "reading/ChipWork.hpp"

#include <kivo/reader/CardSources.hpp>
#include <kivo/simulator/CardService.hpp>
#include <kivo/simulator/Passport.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using namespace kivo;
using namespace kivo::bench;
using namespace kivo::reader;

/// What the exchanges of one reading took.
struct Exchanges {
    double milliseconds = 0;
    int count = 0;
};

class TimedCard final : public Card {
public:
    TimedCard(std::unique_ptr<Card> card, Exchanges& exchanges)
        : card_{std::move(card)}
        , exchanges_{exchanges} {}

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        std::expected<Bytes, CardError> answer;
        exchanges_.milliseconds += timed([&] { answer = card_->transmit(command); });
        ++exchanges_.count;
        return answer;
    }

    Bytes historicalBytes() const override { return card_->historicalBytes(); }

private:
    std::unique_ptr<Card> card_;
    Exchanges& exchanges_;
};

/// Gives one card, which is connected before the time runs.
class ReadyCard final : public CardSource {
public:
    explicit ReadyCard(std::unique_ptr<Card> card)
        : card_{std::move(card)} {}

    std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds /*patience*/,
                                                                std::stop_token /*stop*/) override {
        return std::move(card_);
    }

    std::vector<std::string> readers() const override { return {"ready"}; }

private:
    std::unique_ptr<Card> card_;
};

void measure(const char* way, CardSource& source, const simulator::Passport& passport, int rounds) {
    std::vector<double> whole;
    std::vector<double> ratios;
    int commands = 0;
    for (int i = 0; i < rounds; ++i) {
        auto card = source.waitForCard(std::chrono::seconds{20}, {});
        if (!card) {
            giveUp("no card comes");
        }
        Exchanges exchanges;
        ReadyCard ready{std::make_unique<TimedCard>(*std::move(card), exchanges)};
        const ChipReadingOrder order{.key = {.documentNumber = passport.documentNumber(),
                                             .dateOfBirth = passport.dateOfBirth(),
                                             .dateOfExpiry = passport.dateOfExpiry()},
                                     .groups = {DocumentFile::dg1, DocumentFile::dg2}};
        whole.push_back(timed([&] {
            if (!documentRead(ready, order, {}, [](const ChipProgress&) {})) {
                giveUp("the chip cannot be read");
            }
        }));
        ratios.push_back(whole.back() / exchanges.milliseconds);
        commands = exchanges.count;
    }
    std::printf("%s: %.1f ms, %d commands, ratio %.2f\n", way, median(whole), commands, median(ratios));
    found(std::string{"a chip "} + way + " beside its bytes alone", median(ratios));
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 30;
    const auto passport = std::make_shared<simulator::Passport>();
    {
        const simulator::CardSocket socket{passport};
        measure("behind a socket", *cardsBehindSocket("127.0.0.1", static_cast<std::uint16_t>(socket.port())),
                *passport, rounds);
    }
    const auto service = simulator::CardService::start();
    if (!service) {
        std::printf("behind the card service: not measured, because %s\n", service.error().c_str());
        return EXIT_SUCCESS;
    }
    setenv("PCSCLITE_CSOCK_NAME", (*service)->socket().c_str(),
           1); // NOLINT(concurrency-mt-unsafe): no thread reads yet
    const simulator::VirtualReader reader{passport, **service};
    measure("behind the card service", *systemCards(), *passport, rounds);
    return EXIT_SUCCESS;
}
