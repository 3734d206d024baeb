#include "impl/Completions.hpp"

#include <kivo/Completions.hpp>
#include <kivo/platform/Services.hpp>

#include <mutex>

namespace kivo {

IdvCompletion onMainQueue(IdvCompletion completion) {
    if (!completion) {
        return {};
    }
    return runningOn<IdvOutcome>(platform::services().mainQueue, std::move(completion));
}

class CancellableCompletion::Pending {
public:
    explicit Pending(IdvCompletion completion)
        : completion_{std::move(completion)} {}

    /// Calls the completion unless it was called before. The completion is called, and destroyed, outside the lock.
    bool finish(const IdvOutcome& outcome) {
        IdvCompletion completion;
        {
            const std::scoped_lock lock{mutex_};
            if (std::exchange(isFinished_, true)) {
                return false;
            }
            std::swap(completion, completion_);
        }
        if (completion) {
            completion(outcome);
        }
        return true;
    }

private:
    std::mutex mutex_;
    bool isFinished_ = false;
    IdvCompletion completion_;
};

CancellableCompletion::CancellableCompletion(IdvCompletion completion)
    : pending_{std::make_shared<Pending>(std::move(completion))} {}

IdvCompletion CancellableCompletion::completion() const {
    return [pending = pending_](const IdvOutcome& outcome) { pending->finish(outcome); };
}

bool CancellableCompletion::cancel() const {
    return pending_->finish(std::unexpected{ResponseCode::CANCELLED_BY_USER});
}

} // namespace kivo
