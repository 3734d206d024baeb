// A host that joins a session with an activation code: first-host CODE
#include <kivo/kivo.hpp>

#include <iostream>

int main(int argc, char** argv) {
    const auto session = kivo::KivoSDK::load("EXAMPLE-KEY", "18");
    const auto loop = kivo::platform::RunLoop::main();
    const auto config =
        std::make_shared<kivo::AcquisitionConfig>(kivo::SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face");

    session->join(argc > 1 ? argv[1] : "123456", config, [&](kivo::IdvOutcome outcome) {
        // Answers come on the SDK's thread; the rest of the program lives on the main one.
        loop->async([&, outcome] {
            if (outcome) {
                std::cout << "Joined session " << (*outcome)->data() << '\n';
            } else {
                std::cout << "Not joined: " << kivo::message(outcome.error()) << " (" << kivo::name(outcome.error())
                          << " (" << kivo::code(outcome.error()) << "))\n";
            }
            loop->stop();
        });
    });
    loop->run();
}
