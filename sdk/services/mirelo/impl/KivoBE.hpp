#pragma once

#include "Models/InterfaceVersion.hpp"
#include "Models/SessionKeys.hpp"
#include "services/mirelo/MireloProxy.hpp"

#include <kivo/ResponseCode.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace kivo {

/// The backend client of one interface version. The session itself is kept in the secure store, not in the client.
class KivoBE final : public MireloProxy {
public:
    /// The client of a version; lives as long as the process.
    static KivoBE& shared(InterfaceVersion version);

    explicit KivoBE(InterfaceVersion version);

    void join(std::string forCode, std::string deviceCode, std::shared_ptr<AcquisitionConfig> config,
              IdvCompletion sessionResponseCompletion) override;
    void update(std::string tid, std::string action, std::string message, IdvCompletion completion) override;
    void update(const ServerReportModel& reportModel) override;
    void status(IdvCompletion completion) override;
    void commit(IdvCompletion completion) override;
    void resumeInBrowser() override;
    void upload(AcquisitionObject acquisitionObject, std::string data, IdvCompletion completion) override;
    void reset() override;

private:
    /// The last join; overwritten by the next join.
    struct Fields {
        std::string joinCode;
        std::string deviceCode;
        SDKEnv environment = SDKEnv::PROD;
        AcquisitionConfig::Dictionary appConfigDictionary;
    };

    /// Success when the answer to a join is stored; otherwise the code of the failure.
    using JoinDone = std::expected<void, ResponseCode>;
    /// A request to a joined session; such requests differ only in address, body and codes.
    struct SessionRequest;

    Fields fields() const;
    std::string description() const;
    /// Sends the join of the current fields and stores the answer, still unchecked, and `codeValue` beside the answer.
    void getJoin(const std::string& codeValue, std::function<void(JoinDone done)> completion);
    IdvOutcome judgeJoin(JoinDone done) const;
    void send(const SessionRequest& request, const IdvCompletion& completion) const;

    const InterfaceVersion version_;
    const BackendRules rules_;
    mutable std::mutex mutex_;
    Fields fields_;
};

} // namespace kivo
