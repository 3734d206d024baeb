#pragma once

#include "services/mirelo/MireloProxy.hpp"

#include <memory>
#include <string>
#include <vector>

namespace kivo::test {

/// A backend client that answers as told and keeps the reports it gets.
class ScriptedBackend final : public MireloProxy {
public:
    IdvOutcome outcome = std::unexpected{ResponseCode::UNKNOWN_ERROR};
    std::vector<ServerReportModel> reports;

    void join(std::string, std::string, std::shared_ptr<AcquisitionConfig>, IdvCompletion completion) override {
        completion(outcome);
    }

    void update(std::string, std::string, std::string, IdvCompletion completion) override { completion(outcome); }

    void update(const ServerReportModel& report) override { reports.push_back(report); }

    void status(IdvCompletion completion) override { completion(outcome); }

    void commit(IdvCompletion completion) override { completion(outcome); }

    void resumeInBrowser() override {}

    void upload(AcquisitionObject, std::string, IdvCompletion completion) override { completion(outcome); }

    void reset() override {}
};

} // namespace kivo::test
