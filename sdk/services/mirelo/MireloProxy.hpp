#pragma once

#include "Models/ErrorManager.hpp"

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/AcquisitionObject.hpp>
#include <kivo/Failure.hpp>
#include <kivo/IdvResult.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace kivo {

/// The outcome of a request: a result that is never null, or the failure with its cause.
using BackendOutcome = std::expected<std::shared_ptr<IdvResult>, Failure>;
using BackendCompletion = std::function<void(BackendOutcome)>;

/// The requests of a session API to the identity service.
///
/// Every completion is called exactly once: on the transport's callback queue, or, when no request was sent, on the
/// calling thread before the operation returns.
class MireloProxy {
public:
    virtual ~MireloProxy() = default;

    virtual void join(std::string forCode, std::string deviceCode, std::shared_ptr<AcquisitionConfig> config,
                      BackendCompletion sessionResponseCompletion) = 0;
    virtual void update(std::string tid, std::string action, std::string message, BackendCompletion completion) = 0;

    /// Reports a failure to the session. The report is sent once, and its outcome is not told.
    virtual void update(const ServerReportModel& reportModel) = 0;

    virtual void status(BackendCompletion completion) = 0;
    virtual void commit(BackendCompletion completion) = 0;
    virtual void resumeInBrowser() = 0;
    virtual void upload(AcquisitionObject acquisitionObject, std::string data, BackendCompletion completion) = 0;
    virtual void reset() = 0;
};

} // namespace kivo
