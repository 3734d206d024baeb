#pragma once

#include <kivo/Export.hpp>

#include <functional>
#include <memory>
#include <string>

namespace kivo::platform {

/// How urgently a queue's work should run; a hint that an implementation may ignore.
enum class QualityOfService { background, utility, standard, userInitiated, userInteractive };

/// Runs blocks one at a time, in the order in which they were handed over.
class KIVO_EXPORT DispatchQueue {
public:
    virtual ~DispatchQueue() = default;

    /// Runs `block` later. Callable from any thread; returns at once. The block must not throw.
    virtual void async(std::function<void()> block) = 0;
};

/// A queue that runs one block at a time, in order, on a thread of its own that starts with the first `async`. The
/// thread receives none of the host's signals. The destructor waits for the blocks that are still to run, except when a
/// block of the queue itself destroys the queue; then the blocks run afterwards.
class KIVO_EXPORT SerialQueue final : public DispatchQueue {
public:
    /// `label` names the thread for debuggers.
    explicit SerialQueue(std::string label, QualityOfService qualityOfService = QualityOfService::standard);
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    ~SerialQueue() override;

    /// Throws `std::system_error` when the system has no thread left for the queue.
    void async(std::function<void()> block) override;

    /// Runs `block` and returns when it has run. The block runs on the calling thread when the queue has nothing else
    /// to do, and when the call comes from a block of the queue.
    void sync(const std::function<void()>& block);

    /// The name that the queue was given, for logs and debuggers.
    const std::string& label() const;

private:
    class State;
    std::shared_ptr<State> state_;
};

} // namespace kivo::platform
