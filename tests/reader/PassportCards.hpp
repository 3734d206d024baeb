#pragma once

#include <kivo/reader/Card.hpp>
#include <kivo/simulator/Passport.hpp>

#include <memory>
#include <utility>

namespace kivo::reader {

/// A simulated passport without a reader in between.
class PassportCards final : public CardSource {
public:
    explicit PassportCards(std::shared_ptr<simulator::Passport> passport)
        : passport_{std::move(passport)} {}

    std::expected<std::unique_ptr<Card>, CardError> waitForCard(std::chrono::milliseconds /*patience*/,
                                                                std::stop_token stop) override {
        if (!passport_->waitForReader(stop)) {
            return std::unexpected{CardError::stopped};
        }
        passport_->reset();
        return std::make_unique<Chip>(passport_);
    }

    std::vector<std::string> readers() const override { return {"simulated"}; }

private:
    class Chip final : public Card {
    public:
        explicit Chip(std::shared_ptr<simulator::Passport> passport)
            : passport_{std::move(passport)} {}

        std::expected<Bytes, CardError> transmit(ByteView command) override {
            auto answer = passport_->transmit(command);
            if (answer.empty()) {
                return std::unexpected{CardError::gone};
            }
            return answer;
        }

    private:
        std::shared_ptr<simulator::Passport> passport_;
    };

    std::shared_ptr<simulator::Passport> passport_;
};

} // namespace kivo::reader
