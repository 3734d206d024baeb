#pragma once

#include <kivo/IdvResult.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace kivo {

/// The outcomes that a screen owes the host: exactly one for each action that a person starts on the screen, even if
/// the screen is gone by then.
///
/// Leaving the screen is a cancellation. If an outcome is due, that outcome is told instead; if a success has been
/// told, the cancellation is not told. No outcome is told afterwards. Call `leave()` when the person leaves or the
/// screen has finished, but not when the host takes the screen away. Main thread, except where stated.
class Settlement : public std::enable_shared_from_this<Settlement> {
public:
    using Tell = std::function<void(IdvOutcome outcome)>;

    /// An outcome that is due: from the start of an action until the action releases this object. Holds the listener.
    class Due {
    public:
        Due(std::shared_ptr<Settlement> owner, bool counts);
        Due(const Due&) = delete;
        Due& operator=(const Due&) = delete;
        ~Due();

        /// Tells the outcome, unless the person had left before the outcome was due.
        void settle(IdvOutcome outcome) const;

        /// Tells that the person has left. `state` is the state of the screen's step and keeps its value, because the
        /// step may have succeeded before.
        template <class State>
        void cancel(std::atomic<State>& state) const {
            const auto former = state.load();
            settle(std::unexpected{ResponseCode::CANCELLED_BY_USER});
            state = former;
        }

    private:
        const std::shared_ptr<Settlement> owner_;
        const bool counts_;
        const Tell tell_;
    };

    /// `listener` returns the function that tells the host; an empty function when the listener is gone.
    explicit Settlement(std::function<Tell()> listener)
        : listener_{std::move(listener)} {}

    /// Tells outcomes through the member function `hear` of the listener, and holds the listener only while an outcome
    /// is due.
    template <class Listener>
    static std::shared_ptr<Settlement> with(const std::weak_ptr<Listener>& listener,
                                            void (Listener::*hear)(IdvOutcome outcome)) {
        return std::make_shared<Settlement>([listener, hear]() -> Tell {
            auto held = listener.lock();
            return held ? Tell{[held, hear](IdvOutcome outcome) { ((*held).*hear)(std::move(outcome)); }} : Tell{};
        });
    }

    /// Any thread.
    std::shared_ptr<const Due> expect();

    void settle(IdvOutcome outcome);

    /// Settles on the main queue. Any thread.
    static void settleAfter(std::chrono::nanoseconds delay, std::shared_ptr<const Due> due, IdvOutcome outcome);

    /// The cancellation by a person who leaves. Settling the cancellation does nothing if another outcome is due, a
    /// success has been told, or the person had left before.
    std::shared_ptr<const Due> cancellation();

    /// Returns the cancellation, and lets no further outcome become due.
    std::shared_ptr<const Due> leave();

    /// Records a success that was told without this settlement.
    void recordSuccess() { hasSucceeded_ = true; }

    bool isLeft() const { return isLeft_; }

private:
    const std::function<Tell()> listener_;
    std::atomic<int> dues_ = 0;
    std::atomic<bool> isLeft_ = false;
    bool hasSucceeded_ = false;
    /// The last outcome has been told.
    bool isSilent_ = false;
};

} // namespace kivo
