// A host's own test of a refusal, a lost connection and a good answer, without a network.
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

namespace {

using namespace kivo;

/// Waits for the answer to one call. Returns the name of the event or of the code.
std::string answerTo(const std::function<void(IdvCompletion)>& call) {
    // Shared: the answer may come after the wait has ended.
    const auto answer = std::make_shared<std::string>();
    const auto loop = platform::RunLoop::main();
    call(onMainQueue([answer](IdvOutcome outcome) {
        *answer = outcome ? IdvEventsHelper::eventName((*outcome)->responseType()) : name(outcome.error());
    }));
    // Longer than the SDK's own limit for an answer.
    loop->runUntil([&] { return !answer->empty(); }, std::chrono::seconds{75});
    return *answer;
}

bool expect(const std::string& what, const std::string& expected, const std::string& answer) {
    std::cout << what << ": " << answer << (answer == expected ? "" : ", but expected " + expected) << '\n';
    return answer == expected;
}

} // namespace

int main() {
    simulator::IdentityService service;
    const auto folder = std::filesystem::temp_directory_path() / ("integration-test-" + std::to_string(getpid()));
    auto services =
        platform::linuxServices({.dataFolder = folder, .trustedCertificates = service.trustedCertificates()});
    services.reachability = std::make_shared<simulator::Reachability>();
    platform::install(services);
    const auto page = service.joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});

    const auto session = KivoSDK::load("EXAMPLE-KEY", "18");
    const auto config = std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face");
    const auto join = [&](auto response) { session->join("123456", config, response); };

    bool isGood = true;
    service.inject(simulator::Endpoint::join, simulator::Fault::refuse("STATUS_INVALID_DEVICE_CODE"));
    isGood = expect("a refused join", "STATUS_INVALID_DEVICE_CODE", answerTo(join)) && isGood;
    service.clearFaults();
    service.inject(simulator::Endpoint::join, simulator::Fault::reset());
    isGood = expect("a join whose connection breaks", "INVALID_JOIN_SESSION", answerTo(join)) && isGood;
    service.clearFaults();
    isGood = expect("a join", "JOIN_SESSION", answerTo(join)) && isGood;
    isGood = service.violations().empty() && isGood;

    std::filesystem::remove_all(folder);
    return isGood ? 0 : 1;
}
