#pragma once

#include "Configuration/session/StoredSession.hpp"
#include "Models/InterfaceVersion.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/NetworkManager.hpp"
#include "services/mirelo/MireloProxy.hpp"

#include <kivo/ResponseCode.hpp>

#include <expected>
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
              BackendCompletion sessionResponseCompletion) override;
    void update(std::string tid, std::string action, std::string message, BackendCompletion completion) override;
    void update(const ServerReportModel& reportModel) override;
    void status(BackendCompletion completion) override;
    void commit(BackendCompletion completion) override;
    void resumeInBrowser() override;
    void upload(AcquisitionObject acquisitionObject, std::string data, BackendCompletion completion) override;
    void reset() override;

private:
    /// The last join; overwritten by the next join.
    struct Fields {
        std::string joinCode;
        std::string deviceCode;
        SDKEnv environment = SDKEnv::PROD;
        AcquisitionConfig::Dictionary appConfigDictionary;
    };

    /// Success when the answer to a join is stored.
    using JoinDone = std::expected<void, Failure>;
    /// A request to a joined session; such requests differ only in address, body and codes.
    struct SessionRequest;

    Fields fields() const;
    std::string description() const;
    /// Sends the join of the current fields, stores the answer with `codeValue`, and judges it.
    void getJoin(std::string codeValue, BackendCompletion completion);
    static JoinDone storeAnswer(NetworkManager::Answer answer, std::string_view codeValue, JoinNumber join);
    BackendOutcome judgeJoin(JoinDone done) const;
    /// The outcome of a join that brought no answer; the former session, which the join has emptied, leaves the disk.
    BackendOutcome withoutJoin(Failure failure) const;
    void send(SessionRequest request, BackendCompletion completion) const;
    BackendOutcome judgeUpload(const NetworkManager::Answer& answer) const;

    const InterfaceVersion version_;
    const BackendRules rules_;
    mutable std::mutex mutex_;
    Fields fields_;
};

} // namespace kivo
