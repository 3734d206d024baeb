// A host that joins a session with an activation code: first-host CODE
#include <kivo/kivo.hpp>

#include <iostream>

int main(int argc, char** argv) {
    // Where your identity service is, for each environment. No server answers at these addresses.
    kivo::Deployment::install({.joinPages = {"https://identity.example/join.html",                // PROD
                                             "https://preproduction.identity.example/join.html",  // PREPROD
                                             "https://test.identity.example/join.html",           // TEST
                                             "https://development.identity.example/join.html"}}); // DEV

    const auto session = kivo::KivoSDK::load("EXAMPLE-KEY", "18");
    const auto loop = kivo::platform::RunLoop::main();
    const auto config =
        std::make_shared<kivo::AcquisitionConfig>(kivo::SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face");

    session->join(argc > 1 ? argv[1] : "123456", config, [&](kivo::IdvOutcome outcome) {
        // The answer comes on the library's thread; the rest of the program lives on the main one.
        loop->async([&, outcome] {
            if (outcome) {
                std::cout << "Joined.\n";
            } else {
                const auto why = outcome.error();
                std::cout << "Not joined: " << message(why) << " (" << name(why) << ", " << code(why) << ")\n";
            }
            loop->stop();
        });
    });
    loop->run();
}
