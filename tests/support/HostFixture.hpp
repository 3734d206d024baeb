#pragma once

#include "support/Answers.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <gtest/gtest.h>

#include <algorithm>
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
    std::size_t times = 0;
    IdvOutcome outcome = std::unexpected{ResponseCode::NO_RESPONSE};
    std::thread::id thread;

    bool succeeded(IdvEvents event) const { return times == 1 && outcome && (*outcome)->responseType() == event; }

    ResponseCode code() const { return times == 1 && !outcome ? outcome.error() : static_cast<ResponseCode>(-1); }
};

/// A host application without its network: real services, a fixed device, and time that the test moves.
class OfflineHost : public ::testing::Test {
protected:
    using Call = std::function<void(IdvCompletion)>;

    void installServices(const std::filesystem::path& mainBundle,
                         const std::filesystem::path& trustedCertificates = {}) {
        services = platform::linuxServices({.mainBundle = mainBundle,
                                            .dataFolder = folder.path() / "data",
                                            .trustedCertificates = trustedCertificates});
        services.mainQueue = mainLoop;
        services.reachability = network;
        services.device = device;
        services.workspace = workspace;
        platform::install(services);
    }

    /// A bundle in the test's folder.
    std::filesystem::path bundle() const {
        return folder
            .write("Host.bundle/Info.plist", R"(<plist version="1.0"><dict>
                <key>CFBundleIdentifier</key><string>com.example.host</string>
                <key>CFBundleShortVersionString</key><string>2.1</string></dict></plist>)")
            .parent_path();
    }

    /// Makes the call, waits for its answer, and gives a second answer the chance to show itself.
    static Answered answerTo(const Call& call) {
        Collected<IdvOutcome> answers;
        call(answers.completion());
        answers.wait();
        const auto all = answers.wait(2, std::chrono::milliseconds{5});
        return all.empty() ? Answered{} : Answered{all.size(), all[0].outcome, all[0].thread};
    }

    static std::shared_ptr<AcquisitionConfig> config(SDKEnv environment = SDKEnv::TEST) {
        return std::make_shared<AcquisitionConfig>(environment, "PASSPORT", "P6M", "0.8", "UTO", "face");
    }

    TemporaryFolder folder;
    std::shared_ptr<simulator::Reachability> network = std::make_shared<simulator::Reachability>();
    std::shared_ptr<FixedDevice> device = std::make_shared<FixedDevice>();
    std::shared_ptr<RecordingWorkspace> workspace = std::make_shared<RecordingWorkspace>();
    std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> mainLoop = std::make_shared<platform::RunLoop>(clock);
    platform::Services services;
};

/// The same with real transport to a simulated identity service.
class HostFixture : public OfflineHost {
protected:
    HostFixture()
        : HostFixture{defaultConfiguration()} {}

    explicit HostFixture(simulator::IdentityServiceConfiguration configuration)
        : service{std::move(configuration)} {
        installServices(bundle(), service.trustedCertificates());
        const auto page = service.joinPage();
        Deployment::install({.joinPages = {page, page, page, page}});
    }

    static simulator::IdentityServiceConfiguration defaultConfiguration(bool hostPerEndpoint = false) {
        simulator::IdentityServiceConfiguration configuration;
        configuration.retryLimit = 3;
        configuration.hostPerEndpoint = hostPerEndpoint;
        return configuration;
    }

    static Answered join(KivoAPI& session, const std::string& code = "123456") {
        return answerTo([&](IdvCompletion response) { session.join(code, config(), std::move(response)); });
    }

    /// The requests received so far that went to one endpoint.
    std::vector<simulator::RecordedRequest> requestsTo(simulator::Endpoint endpoint) const {
        auto requests = service.requests();
        std::erase_if(requests, [&](const auto& request) { return request.endpoint != endpoint; });
        return requests;
    }

    /// How many operations have come to an endpoint. The notices about failures and attempts, which arrive at one of
    /// the endpoints at any time, do not count.
    std::ptrdiff_t operationsAt(simulator::Endpoint endpoint) const {
        return std::ranges::count_if(requestsTo(endpoint), [](const auto& request) {
            return !request.body.contains("\"os\":\"I\"") && !request.body.contains("Attempts count");
        });
    }

    /// One of the requests of a session, and what its host hears when it succeeds or does not get through.
    struct Operation {
        simulator::Endpoint endpoint;
        Call call;
        IdvEvents event;
        ResponseCode transportFailure;
    };

    static std::vector<Operation> operationsOf(const std::shared_ptr<KivoAPI>& session) {
        using enum simulator::Endpoint;
        using enum ResponseCode;
        const auto selfie = AcquisitionObject::selfieImage;
        return {
            {simulator::Endpoint::join, [=](auto done) { session->join("123456", config(), done); },
             IdvEvents::JOIN_SESSION, INVALID_JOIN_SESSION},
            {update, [=](auto done) { session->update("inform", "m", done); }, IdvEvents::UPDATE_SESSION,
             INVALID_UPDATE_SESSION},
            {status, [=](auto done) { session->status(done); }, IdvEvents::SESSION_STATUS, INVALID_STATUS_SESSION},
            {commit, [=](auto done) { session->commit(done); }, IdvEvents::COMMIT_SESSION, INVALID_COMMIT_SESSION},
            {upload, [=](auto done) { session->upload(selfie, "d", done); }, IdvEvents::UPLOAD_DOCUMENT,
             BIODATA_UPLOAD_FAILED},
        };
    }

    simulator::IdentityService service;
};

} // namespace kivo::test
