#pragma once

#include "Models/InterfaceVersion.hpp"
#include "Models/SessionKeys.hpp"
#include "services/mirelo/MireloProxy.hpp"
#include "services/mirelo/impl/KivoBERules.hpp"

#include <kivo/ResponseCode.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace kivo {

/// The backend client of one interface version. The session itself lives in the secure store, not here.
class KivoBE final : public MireloProxy {
public:
    /// The one client of a version; never destroyed.
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
    /// The last join; overwritten by the next one.
    struct Fields {
        std::string joinCode;
        std::string deviceCode;
        SDKEnv environment = SDKEnv::PROD;
        AcquisitionConfig::Dictionary appConfigDictionary;
    };

    /// Whether the answer to a join is stored, or the code to fail with.
    using JoinDone = std::expected<void, ResponseCode>;
    /// One of the requests to a joined session that differ in address, body and codes only.
    struct SessionRequest;

    Fields fields() const;
    std::string description() const;
    /// Sends the join of the current fields and stores the answer, unjudged, with `codeValue` beside it.
    void getJoin(const std::string& codeValue, std::function<void(JoinDone done)> completion);
    IdvOutcome judgeJoin(JoinDone done) const;
    void send(const SessionRequest& request, const IdvCompletion& completion) const;

    const InterfaceVersion version_;
    const KivoBERules rules_;
    mutable std::mutex mutex_;
    Fields fields_;
};

} // namespace kivo
