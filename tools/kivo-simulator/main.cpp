#include "Options.hpp"
#include "Serve.hpp"
#include "ServiceCheck.hpp"
#include "program/Program.hpp"

int main(int argc, char** argv) {
    return program::run("kivo-simulator", [&] {
        const auto options = simulation::parse(argc, argv);
        if (!options) {
            return options.error();
        }
        return options->checked.empty() ? simulation::serve(*options) : simulation::checkService(*options);
    });
}
