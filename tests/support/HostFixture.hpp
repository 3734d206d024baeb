#pragma once

#include "support/TemporaryFolder.hpp"

#include <kivo/kivo.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kivo::test {

/// A device that answers the same everywhere.
class FixedDevice final : public platform::Device {
public:
    std::string systemVersion() override { return "12.5"; }

    std::optional<std::string> identifierForVendor() override { return "6E1F0B7C-0000-4000-8000-00000000C0DE"; }

    std::vector<platform::InterfaceAddress> interfaceAddresses() override { return addresses; }

    std::string machine() override { return machineName; }

    std::vector<platform::InterfaceAddress> addresses;
    std::string machineName = "x86_64";
};

/// Notes which pages were opened.
class RecordingWorkspace final : public platform::Workspace {
public:
    void open(const std::string& url) override { opened.push_back(url); }

    void vibrate() override {}

    std::vector<std::string> opened;
};

/// One answered call: how often it was answered, with what, and on which thread.
struct Answered {
    int times = 0;
    IdvOutcome outcome = std::unexpected{ResponseCode::NO_RESPONSE};
    std::thread::id thread;

    bool succeeded(IdvEvents event) const;
    ResponseCode code() const;
};

/// A host application: real transport and keychain, a simulated identity service and network, a fixed device.
class HostFixture : public ::testing::Test {
protected:
    using Call = std::function<void(IdvCompletion)>;

    explicit HostFixture(simulator::IdentityServiceConfiguration configuration = defaultConfiguration());

    static simulator::IdentityServiceConfiguration defaultConfiguration();

    /// Makes the call, waits for its answer, and gives a second answer the chance to show itself.
    Answered answerTo(const Call& call);

    Answered join(KivoAPI& session, const std::string& code = "123456");

    /// The requests received so far that went to one endpoint.
    std::vector<simulator::RecordedRequest> requestsTo(simulator::Endpoint endpoint) const;

    /// One of the requests of a session, and what its host hears when it succeeds or does not get through.
    struct Operation {
        simulator::Endpoint endpoint;
        Call call;
        IdvEvents event;
        ResponseCode transportFailure;
    };

    /// All of them.
    static std::vector<Operation> operationsOf(const std::shared_ptr<KivoAPI>& session);

    /// How many operations have come to an endpoint. The notices about failures and attempts, which arrive at one of
    /// the endpoints at any time, do not count.
    std::ptrdiff_t operationsAt(simulator::Endpoint endpoint) const;

    static std::shared_ptr<AcquisitionConfig> config(SDKEnv environment = SDKEnv::TEST);

    TemporaryFolder folder;
    std::shared_ptr<simulator::Reachability> network = std::make_shared<simulator::Reachability>();
    std::shared_ptr<FixedDevice> device = std::make_shared<FixedDevice>();
    std::shared_ptr<RecordingWorkspace> workspace = std::make_shared<RecordingWorkspace>();
    std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> mainLoop = std::make_shared<platform::RunLoop>(clock);
    simulator::IdentityService service;
    platform::Services services;
};

} // namespace kivo::test
