#pragma once

#include "Models/ErrorManager.hpp"

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/AcquisitionObject.hpp>
#include <kivo/IdvResult.hpp>

#include <memory>
#include <string>

namespace kivo {

/// What a session API asks of the identity service.
///
/// Every completion but a report's is called exactly once: on the transport's callback queue, or on the calling
/// thread before the operation returns when nothing was sent.
class MireloProxy {
public:
    virtual ~MireloProxy() = default;

    virtual void join(std::string forCode, std::string deviceCode, std::shared_ptr<AcquisitionConfig> config,
                      IdvCompletion sessionResponseCompletion) = 0;
    virtual void update(std::string tid, std::string action, std::string message, IdvCompletion completion) = 0;

    /// Reports a failure to the session. Sent once; nobody is told how it went.
    virtual void update(const ServerReportModel& reportModel) = 0;

    virtual void status(IdvCompletion completion) = 0;
    virtual void commit(IdvCompletion completion) = 0;
    virtual void resumeInBrowser() = 0;
    virtual void upload(AcquisitionObject acquisitionObject, std::string data, IdvCompletion completion) = 0;
    virtual void reset() = 0;
};

} // namespace kivo
