#pragma once

#include <kivo/reader/Card.hpp>
#include <kivo/simulator/Passport.hpp>

#include <memory>
#include <utility>

namespace kivo::test {

/// A card reader in this process, on which a simulated passport lies.
class PassportAtHand final : public reader::CardSource {
public:
    explicit PassportAtHand(std::shared_ptr<simulator::Passport> passport)
        : passport_{std::move(passport)} {}

    std::expected<std::unique_ptr<reader::Card>, reader::CardError> waitForCard(std::chrono::milliseconds /*patience*/,
                                                                                std::stop_token /*stop*/) override {
        if (!passport_->isOnReader()) {
            return std::unexpected{reader::CardError::noCard};
        }
        passport_->reset();
        return std::make_unique<Chip>(passport_);
    }

    std::vector<std::string> readers() const override { return {"at hand"}; }

private:
    class Chip final : public reader::Card {
    public:
        explicit Chip(std::shared_ptr<simulator::Passport> passport)
            : passport_{std::move(passport)} {}

        std::expected<reader::Bytes, reader::CardError> transmit(reader::ByteView command) override {
            auto answer = passport_->transmit(command);
            if (answer.empty()) {
                return std::unexpected{reader::CardError::gone};
            }
            return answer;
        }

    private:
        std::shared_ptr<simulator::Passport> passport_;
    };

    std::shared_ptr<simulator::Passport> passport_;
};

/// A date of six digits as a person types the date.
inline std::string typedDate(const std::string& digits, const char* century) {
    return digits.substr(4, 2) + "." + digits.substr(2, 2) + "." + century + digits.substr(0, 2);
}

} // namespace kivo::test
