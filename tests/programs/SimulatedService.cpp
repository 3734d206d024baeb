// Runs a host in another language against the simulated identity service: SimulatedService [--any-document] COMMAND
// [ARGUMENT...]
//
// The command finds in its environment what a host must know, in a folder that is gone with this program. The service
// refuses the first status request of its life. With --any-document it takes notices of documents that its document
// proxy has not seen.

#include "support/TemporaryFolder.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

int main(int count, char** arguments) {
    using namespace kivo;
    const bool takesAnyDocument = count > 1 && std::string_view{arguments[1]} == "--any-document";
    char** const command = arguments + (takesAnyDocument ? 2 : 1);
    if (*command == nullptr) {
        std::fputs("usage: SimulatedService [--any-document] COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    simulator::IdentityServiceConfiguration configuration;
    configuration.retryLimit = 9;
    simulator::IdentityService service{configuration};
    service.inject(simulator::Endpoint::status, simulator::Fault::refuse("STATUS_BAD_BIODATA"),
                   simulator::Calls::only(1));
    if (takesAnyDocument) {
        service.inject(simulator::Endpoint::upload, simulator::Fault::answer(R"({"response-type":"data"})"));
    }

    const test::TemporaryFolder folder;
    folder.write("host.bundle/readid_certificates.plist",
                 "<plist version=\"1.0\"><array><string>" + service.pins().leaf + "</string></array></plist>");
    setenv("KIVO_JOIN_PAGE", service.joinPage().c_str(), 1);
    setenv("KIVO_ACTIVATION_CODE", "123456", 1);
    setenv("KIVO_AUTHORITY", service.trustedCertificates().c_str(), 1);
    setenv("KIVO_PIN", service.pins().leaf.c_str(), 1);
    setenv("KIVO_HOST_BUNDLE", (folder.path() / "host.bundle").c_str(), 1);
    setenv("KIVO_DATA_FOLDER", (folder.path() / "data").c_str(), 1);

    pid_t host = 0;
    int status = 0;
    if (posix_spawnp(&host, *command, nullptr, nullptr, command, environ) != 0 || waitpid(host, &status, 0) != host) {
        std::perror(*command);
        return 1;
    }
    for (const auto& violation : service.violations()) {
        std::fprintf(stderr, "breaks the protocol: %s\n", violation.c_str());
    }
    return WIFEXITED(status) && service.violations().empty() ? WEXITSTATUS(status) : 1;
}
