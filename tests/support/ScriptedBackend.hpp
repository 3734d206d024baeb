#pragma once

#include "services/mirelo/MireloProxy.hpp"

#include <memory>
#include <string>
#include <vector>

namespace kivo::test {

/// A backend client that answers as told and keeps the reports it gets.
class ScriptedBackend final : public MireloProxy {
public:
    BackendOutcome outcome = std::unexpected{Failure{}};
    std::vector<ServerReportModel> reports;

    void join(std::string, std::string, std::shared_ptr<AcquisitionConfig>, BackendCompletion completion) override {
        completion(outcome);
    }

    void update(std::string, std::string, std::string, BackendCompletion completion) override { completion(outcome); }

    void update(const ServerReportModel& report) override { reports.push_back(report); }

    void status(BackendCompletion completion) override { completion(outcome); }

    void commit(BackendCompletion completion) override { completion(outcome); }

    void resumeInBrowser() override {}

    void upload(AcquisitionObject, std::string, BackendCompletion completion) override { completion(outcome); }

    void reset() override {}
};

} // namespace kivo::test
