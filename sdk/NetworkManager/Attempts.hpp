#pragma once

#include <kivo/ActivationResponse.hpp>

#include <atomic>
#include <cstdint>
#include <optional>

namespace kivo {

/// The owner of the acquisition attempts: keeps and counts the remaining attempts, and knows whether the screens
/// enforce the limit. Any thread; every operation is one atomic step.
class Attempts {
public:
    static Attempts& shared();

    /// Takes over the retry limit of a joined session. After a session without a limit, the number stays the same and
    /// the screens no longer enforce the limit.
    void apply(const ActivationResponse& session);

    /// The number of remaining attempts; below zero after further attempts on screens that do not enforce the limit.
    std::int64_t retryLimit() const { return retryLimit_; }

    void setRetryLimit(std::int64_t attempts) { retryLimit_ = attempts; }

    /// Whether the acquisition screens enforce the limit.
    bool shouldApplyRetryLimit() const { return shouldApplyRetryLimit_; }

    void setShouldApplyRetryLimit(bool apply) { shouldApplyRetryLimit_ = apply; }

    /// Whether no screen may begin a further attempt.
    bool areUsedUp() const { return shouldApplyRetryLimit_ && retryLimit_ < 1; }

    /// Counts an attempt if at least one remains, and returns the new number; absent when none remained.
    std::optional<std::int64_t> take();

    /// Counts an attempt that has been made, and returns the new number.
    std::int64_t count() { return --retryLimit_; }

private:
    std::atomic<std::int64_t> retryLimit_ = 0;
    std::atomic<bool> shouldApplyRetryLimit_ = false;
};

} // namespace kivo
