#pragma once

#include "support/TemporaryFolder.hpp"

#include <kivo/simulator/CardService.hpp>

#include <cstdlib>
#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace kivo::test {

/// A card service of the test's own. The client library asks the environment once in a process, so each service of a
/// process is at the same place.
inline std::expected<std::unique_ptr<simulator::CardService>, std::string> startedCardService() {
    static const TemporaryFolder folder;
    auto service = simulator::CardService::start();
    if (service) {
        const auto place = folder.path() / "pcscd.comm";
        std::filesystem::remove(place);
        std::filesystem::create_symlink((*service)->socket(), place);
        setenv("PCSCLITE_CSOCK_NAME", place.c_str(), 1);
    }
    return service;
}

} // namespace kivo::test
