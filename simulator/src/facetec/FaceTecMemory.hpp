#pragma once

#include <kivo/simulator/ScanScript.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// What the vendor and its sessions know in common.
struct FaceTecMemory {
    /// How the initialisation ended; absent until it has.
    std::optional<int> initializationStatus;
    std::string successMessage;
    std::vector<std::shared_ptr<ScanRecord>> sessions;
    std::vector<std::string> violations;
};

} // namespace kivo::simulator
