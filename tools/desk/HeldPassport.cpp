#include "desk/HeldPassport.hpp"

#include <utility>

namespace desk {

using kivo::reader::Bytes;
using kivo::reader::ByteView;
using kivo::reader::Card;
using kivo::reader::CardError;

class HeldPassport::Chip final : public Card {
public:
    Chip(HeldPassport& desk, std::stop_token stop)
        : desk_{desk}
        , stop_{std::move(stop)} {}

    std::expected<Bytes, CardError> transmit(ByteView command) override {
        {
            std::unique_lock lock{desk_.mutex_};
            const auto number = count_++;
            const auto mayPass = [&] { return !desk_.hold_ || number < *desk_.hold_; };
            desk_.isHolding_ = !mayPass();
            const bool passes = desk_.changed_.wait(lock, stop_, mayPass);
            desk_.isHolding_ = false;
            if (!passes) {
                return std::unexpected{CardError::stopped};
            }
        }
        auto answer = desk_.passport_->transmit(command, stop_);
        if (answer.empty()) {
            return std::unexpected{CardError::gone};
        }
        return answer;
    }

private:
    HeldPassport& desk_;
    const std::stop_token stop_;
    std::size_t count_ = 0;
};

template <class Value>
void HeldPassport::set(Value& value, Value wanted) {
    {
        const std::scoped_lock lock{mutex_};
        value = std::move(wanted);
    }
    changed_.notify_all();
}

void HeldPassport::setConnected(bool connected) {
    set(isConnected_, connected);
}

void HeldPassport::setLaid(bool laid) {
    set(isLaid_, laid);
}

void HeldPassport::setRefusal(std::optional<CardError> refusal) {
    set(refusal_, refusal);
}

void HeldPassport::setHold(std::optional<std::size_t> command) {
    set(hold_, command);
}

bool HeldPassport::isHolding() const {
    const std::scoped_lock lock{mutex_};
    return isHolding_;
}

std::expected<std::unique_ptr<Card>, CardError> HeldPassport::waitForCard(std::chrono::milliseconds patience,
                                                                          std::stop_token stop) {
    std::unique_lock lock{mutex_};
    // A wait without a reader ends when the reader comes.
    const bool wasConnected = isConnected_;
    changed_.wait_for(lock, stop, patience, [&] { return refusal_ || (isConnected_ && (isLaid_ || !wasConnected)); });
    if (refusal_) {
        return std::unexpected{*refusal_};
    }
    if (!isConnected_ || !isLaid_) {
        return std::unexpected{isConnected_ ? CardError::noCard : CardError::noReader};
    }
    passport_->reset();
    return std::make_unique<Chip>(*this, std::move(stop));
}

std::vector<std::string> HeldPassport::readers() const {
    const std::scoped_lock lock{mutex_};
    return isConnected_ ? std::vector<std::string>{"on the desk"} : std::vector<std::string>{};
}

} // namespace desk
