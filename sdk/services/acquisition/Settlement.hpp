#pragma once

#include <kivo/IdvResult.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace kivo {

/// What a screen owes the host: one outcome for each thing that a person sets going on the screen, told whatever
/// becomes of the screen meanwhile.
///
/// A person who leaves has cancelled, unless an outcome is due, which then is the answer. Nothing more is told
/// afterwards. Main thread, except where stated.
class Settlement : public std::enable_shared_from_this<Settlement> {
public:
    using Tell = std::function<void(IdvOutcome outcome)>;

    /// One outcome on its way. It holds the listener, and is due for as long as somebody holds it.
    class Due {
    public:
        Due(std::shared_ptr<Settlement> owner, bool counts);
        Due(const Due&) = delete;
        Due& operator=(const Due&) = delete;
        ~Due();

        /// Tells the outcome, unless the person had left before it was due.
        void settle(IdvOutcome outcome) const;

    private:
        const std::shared_ptr<Settlement> owner_;
        const bool counts_;
        const Tell tell_;
    };

    /// `listener` gives what tells the host, or nothing where nobody listens any more.
    explicit Settlement(std::function<Tell()> listener)
        : listener_{std::move(listener)} {}

    /// Tells `hear` of the listener, which is held only while an outcome is due.
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

    /// The person leaves, or the screen is done. What is returned tells a cancellation, but tells nothing where an
    /// outcome is due or the person has left already.
    std::shared_ptr<const Due> leave();

    bool isLeft() const { return isLeft_; }

private:
    const std::function<Tell()> listener_;
    std::atomic<int> dues_ = 0;
    std::atomic<bool> isLeft_ = false;
    /// The last outcome has been told.
    bool isSilent_ = false;
};

} // namespace kivo
