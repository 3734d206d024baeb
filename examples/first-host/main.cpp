// A host that joins a session with an activation code: first-host CODE
#include <kivo/kivo.hpp>

#include <iostream>

int main(int argc, char** argv) {
    const auto loop = kivo::platform::RunLoop::main();
    std::shared_ptr<kivo::KivoAPI> session;
    session = kivo::KivoSDK::join({.key = "EXAMPLE-KEY",
                                   .activationCode = argc > 1 ? argv[1] : "123456",
                                   .config = {.ENVIRONMENT = kivo::SDKEnv::TEST, .KIVO_APP_DOCLIST = "PASSPORT"},
                                   // Where your identity service is. No server answers at this address.
                                   .deployment = {{.joinPages = {.TEST = "https://test.identity.example/join.html"}}}},
                                  [&](const kivo::IdvOutcome& outcome) {
                                      std::cout << (outcome ? "Joined." : "Not joined: " + session->lastFailure()->text)
                                                << '\n';
                                      loop->stop();
                                  });
    loop->run();
}
