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

/// A queue that runs one block at a time, in order: on a thread of its own, which begins with the first `async`. Blocks
/// still waiting when the last reference goes are run first.
class KIVO_EXPORT SerialQueue final : public DispatchQueue {
public:
    /// `label` names the thread for debuggers.
    explicit SerialQueue(std::string label, QualityOfService qualityOfService = QualityOfService::standard);
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    ~SerialQueue() override;

    void async(std::function<void()> block) override;

    /// Runs `block` and returns when it has run; on the calling thread when the queue has nothing else to do, or when
    /// called from one of its blocks.
    void sync(const std::function<void()>& block);

    const std::string& label() const;

private:
    class State;
    std::shared_ptr<State> state_;
};

} // namespace kivo::platform
