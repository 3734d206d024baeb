// The time in which DG1, DG2 (20 KiB) and SOD are read, and the whole of a reading with the opening of the chip and the
// proofs, beside the floor: the same commands
// as bytes, sent to the same chip without any reader. The chip has the same random numbers each time, so it takes the
// secured commands of a reading again and gives the same answers.
#include "Measuring.hpp"
#include "reading/ChipWork.hpp"

#include <kivo/reader/CardSources.hpp>
#include <kivo/simulator/CardService.hpp>
#include <kivo/simulator/Passport.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using namespace kivo::bench;
using namespace kivo::reader;

/// The chip's random numbers, the same again after each `restart`.
class Numbers {
public:
    void restart() {
        const std::scoped_lock lock{mutex_};
        engine_.seed();
    }

    void fill(std::span<std::uint8_t> bytes) {
        const std::scoped_lock lock{mutex_};
        std::ranges::generate(bytes, [this] { return static_cast<std::uint8_t>(engine_()); });
    }

private:
    std::mutex mutex_;
    std::mt19937 engine_;
};

struct Exchange {
    Bytes command;
    Bytes answer;
};

class RecordingCard final : public Card {
public:
    RecordingCard(std::unique_ptr<Card> card, std::vector<Exchange>& exchanges)
        : card_{std::move(card)}
        , exchanges_{exchanges} {}

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        auto answer = card_->transmit(command);
        exchanges_.push_back({.command = {command.begin(), command.end()}, .answer = answer.value_or(Bytes{})});
        return answer;
    }

    Bytes historicalBytes() const override { return card_->historicalBytes(); }

    bool carriesLongMessages() const override { return card_->carriesLongMessages(); }

private:
    std::unique_ptr<Card> card_;
    std::vector<Exchange>& exchanges_;
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

struct Chip {
    std::shared_ptr<Numbers> numbers = std::make_shared<Numbers>();
    std::shared_ptr<simulator::Passport> passport =
        std::make_shared<simulator::Passport>(simulator::PassportConfiguration{
            .random = [numbers = numbers](std::span<std::uint8_t> bytes) { numbers->fill(bytes); }});

    std::unique_ptr<Card> laidOn(CardSource& source) const {
        auto card = source.waitForCard(std::chrono::seconds{20}, {});
        if (!card) {
            giveUp("no card comes");
        }
        numbers->restart();
        return *std::move(card);
    }
};

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>{Clock::now() - start}.count();
}

/// What one way to read took: the files alone, once the chip is open, and everything with the opening and the proofs.
struct Times {
    double files = 0;
    double all = 0;
};

/// What was exchanged, and which of the exchanges read the files.
struct Recording {
    std::vector<Exchange> exchanges;
    std::size_t firstOfFiles = 0;
    std::size_t endOfFiles = 0;
};

Times timesOfReading(CardSource& source, const Chip& chip, Recording& recording) {
    ReadyCard ready{std::make_unique<RecordingCard>(chip.laidOn(source), recording.exchanges)};
    const ChipReadingOrder order{.key = {.documentNumber = chip.passport->documentNumber(),
                                         .dateOfBirth = chip.passport->dateOfBirth(),
                                         .dateOfExpiry = chip.passport->dateOfExpiry()},
                                 .groups = {DocumentFile::dg1, DocumentFile::dg2}};
    Times times;
    const auto start = Clock::now();
    auto startOfFiles = start;
    const auto document = documentRead(ready, order, {}, [&](const ChipProgress& progress) {
        if (progress.step == ChipProgress::Step::reading && recording.firstOfFiles == 0) {
            recording.firstOfFiles = recording.exchanges.size();
            startOfFiles = Clock::now();
        } else if (progress.step == ChipProgress::Step::provingChip) {
            recording.endOfFiles = recording.exchanges.size();
            times.files = millisecondsSince(startOfFiles);
        }
    });
    times.all = millisecondsSince(start);
    if (!document) {
        giveUp("the chip cannot be read");
    }
    return times;
}

Times timesOfBytes(CardSource& source, const Chip& chip, const Recording& recording) {
    auto card = chip.laidOn(source);
    Times times;
    bool isSame = true;
    const auto start = Clock::now();
    auto startOfFiles = start;
    for (std::size_t i = 0; i < recording.exchanges.size(); ++i) {
        if (i == recording.firstOfFiles) {
            startOfFiles = Clock::now();
        } else if (i == recording.endOfFiles) {
            times.files = millisecondsSince(startOfFiles);
        }
        isSame &= card->transmit(recording.exchanges[i].command) == recording.exchanges[i].answer;
    }
    card = nullptr; // as the reading does
    times.all = millisecondsSince(start);
    if (!isSame) {
        giveUp("the chip answers the same commands in another way");
    }
    return times;
}

void tell(const std::string& what, const std::vector<Times>& readings, const std::vector<Times>& bytes,
          double Times::* part) {
    std::vector<double> reading;
    std::vector<double> bare;
    std::vector<double> ratios;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        reading.push_back(readings[i].*part);
        bare.push_back(bytes[i].*part);
        ratios.push_back(reading.back() / bare.back());
    }
    std::printf("%s: %.2f ms, its bytes alone %.2f ms, ratio %.2f\n", what.c_str(), median(reading), median(bare),
                median(ratios));
    found(what + " beside its bytes alone", median(ratios));
}

void measure(const std::string& way, CardSource& source, const Chip& chip, int rounds) {
    std::vector<Times> readings;
    std::vector<Times> bytes;
    for (int i = 0; i < rounds; ++i) {
        Recording recording;
        readings.push_back(timesOfReading(source, chip, recording));
        bytes.push_back(timesOfBytes(source, chip, recording));
    }
    tell("the files of a chip " + way, readings, bytes, &Times::files);
    tell("a chip " + way, readings, bytes, &Times::all);
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 30;
    const Chip chip;
    {
        const simulator::CardSocket socket{chip.passport};
        measure("behind a socket", *cardsBehindSocket("127.0.0.1", static_cast<std::uint16_t>(socket.port())), chip,
                rounds);
    }
    const auto service = simulator::CardService::start();
    if (!service) {
        std::printf("behind the card service: not measured, because %s\n", service.error().c_str());
        return EXIT_SUCCESS;
    }
    setenv("PCSCLITE_CSOCK_NAME", (*service)->socket().c_str(),
           1); // NOLINT(concurrency-mt-unsafe): no thread reads yet
    const simulator::VirtualReader reader{chip.passport, **service};
    measure("behind the card service", *systemCards(), chip, rounds);
    return EXIT_SUCCESS;
}
