#pragma once

#include <kivo/ActivationResponse.hpp>

#include <atomic>
#include <cstdint>
#include <optional>

namespace kivo {

/// The owner of the acquisition attempts: keeps how many remain, knows whether the screens enforce the limit, and
/// counts. Any thread; every operation is one step.
class Attempts {
public:
    static Attempts& shared();

    /// Takes over the retry limit of a session that has been joined. A session without a limit leaves the number as it
    /// is, and the screens stop to enforce it.
    void apply(const ActivationResponse& session);

    /// How many attempts remain; below zero when the screens do not enforce the limit and go on.
    std::int64_t retryLimit() const { return retryLimit_; }

    void setRetryLimit(std::int64_t attempts) { retryLimit_ = attempts; }

    /// Whether the acquisition screens enforce the limit.
    bool shouldApplyRetryLimit() const { return shouldApplyRetryLimit_; }

    void setShouldApplyRetryLimit(bool apply) { shouldApplyRetryLimit_ = apply; }

    /// Whether no screen may begin a further attempt.
    bool areUsedUp() const { return shouldApplyRetryLimit_ && retryLimit_ < 1; }

    /// Counts an attempt if at least one remains, and gives how many remain then; absent when none remained.
    std::optional<std::int64_t> take();

    /// Counts an attempt that has been made, and gives how many remain then.
    std::int64_t count() { return --retryLimit_; }

private:
    std::atomic<std::int64_t> retryLimit_ = 0;
    std::atomic<bool> shouldApplyRetryLimit_ = false;
};

} // namespace kivo
