// Exits while chips are read. Argument: after how many microseconds, or "card" for a card source that exits itself.

#include "reader/PassportCards.hpp"
#include "reading/ChipReading.hpp"

#include <chrono>
#include <cstdlib>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace kivo::reader;

class ExitingCards final : public CardSource {
public:
    std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds /*patience*/,
                                                                std::stop_token /*stop*/) override {
        std::exit(0);
    }

    std::vector<std::string> readers() const override { return {}; }
};

std::shared_ptr<ChipReading> startedWith(std::shared_ptr<CardSource> source, AccessKey key) {
    using enum DocumentFile;
    return ChipReading::start(std::move(source),
                              {.key = std::move(key), .groups = {dg1, dg2, dg7, dg11, dg12, dg14, dg15}}, nullptr,
                              [](const auto&) {});
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    // Never released, like a host's globals.
    auto* const readings = new std::vector<std::shared_ptr<ChipReading>>;
    for (int i = 0; i < 3; ++i) {
        const auto passport = std::make_shared<kivo::simulator::Passport>();
        readings->push_back(
            startedWith(std::make_shared<PassportCards>(passport), {.documentNumber = passport->documentNumber(),
                                                                    .dateOfBirth = passport->dateOfBirth(),
                                                                    .dateOfExpiry = passport->dateOfExpiry()}));
    }
    const std::string when = arguments[1];
    if (when == "card") {
        readings->push_back(startedWith(std::make_shared<ExitingCards>(), {}));
        std::counting_semaphore<>{0}.acquire();
    }
    std::this_thread::sleep_for(std::chrono::microseconds{std::stoi(when)});
    std::exit(0);
}
