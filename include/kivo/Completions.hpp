#pragma once

#include <kivo/Export.hpp>
#include <kivo/IdvResult.hpp>

#include <memory>

namespace kivo {

/// A completion that calls `completion` on the main queue, wherever the outcome comes, and destroys it and what it
/// captures there. See `KivoAPI::setAnswerQueue` for the same rule for all requests of a session.
KIVO_EXPORT IdvCompletion onMainQueue(IdvCompletion completion);

/// The completion of one request, which the host can take back, for example when the person leaves the page.
///
/// Functions may be called on any thread. The request itself goes on, because the service may have received it already;
/// its outcome is dropped. Not for `acquire`: a screen may answer more than once, and what comes after the first answer
/// would be dropped.
class KIVO_EXPORT CancellableCompletion {
public:
    /// Wraps the completion that a host gives to a request.
    explicit CancellableCompletion(IdvCompletion completion);

    /// The completion to hand to a request.
    IdvCompletion completion() const;

    /// Calls the host's completion with `CANCELLED_BY_USER` before `cancel` returns, and destroys its captures.
    /// Does nothing, and returns false, when the outcome has come already.
    bool cancel() const;

private:
    class Pending;
    std::shared_ptr<Pending> pending_;
};

} // namespace kivo
