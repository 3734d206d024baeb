#include "services/acquisition/Settlement.hpp"

#include <kivo/platform/Services.hpp>

namespace kivo {

Settlement::Due::Due(std::shared_ptr<Settlement> owner, bool counts)
    : owner_{std::move(owner)}
    , counts_{counts}
    , tell_{owner_->listener_()} {
    ++owner_->dues_;
}

Settlement::Due::~Due() {
    --owner_->dues_;
}

void Settlement::Due::settle(IdvOutcome outcome) const {
    if (counts_ && tell_ && !owner_->isSilent_) {
        owner_->isSilent_ = owner_->isLeft_;
        owner_->hasSucceeded_ = owner_->hasSucceeded_ || outcome;
        tell_(std::move(outcome));
    }
}

std::shared_ptr<const Settlement::Due> Settlement::expect() {
    return std::make_shared<const Due>(shared_from_this(), !isLeft_);
}

void Settlement::settle(IdvOutcome outcome) {
    expect()->settle(std::move(outcome));
}

void Settlement::settleAfter(std::chrono::nanoseconds delay, std::shared_ptr<const Due> due, IdvOutcome outcome) {
    platform::services().mainQueue->asyncAfter(
        delay, [due = std::move(due), outcome = std::move(outcome)] { due->settle(outcome); });
}

std::shared_ptr<const Settlement::Due> Settlement::cancellation() {
    return std::make_shared<const Due>(shared_from_this(), dues_ == 0 && !isLeft_ && !hasSucceeded_);
}

std::shared_ptr<const Settlement::Due> Settlement::leave() {
    auto answer = cancellation();
    isLeft_ = true;
    return answer;
}

} // namespace kivo
