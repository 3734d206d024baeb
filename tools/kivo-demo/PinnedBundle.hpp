#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace demo {

/// What a host's list of pins may hold.
struct PinChoice {
    std::string_view name;
    std::string_view meaning;
};

inline constexpr std::array pinChoices{
    PinChoice{"leaf", "the pin of the service's leaf"},
    PinChoice{"intermediate", "the pin of the service's intermediate"},
    PinChoice{"other", "the pin of another service"},
    PinChoice{"empty", "no pin"},
};

/// Copies the demo's own bundle, adds a list of pins, and gives the folder.
std::filesystem::path makePinnedBundle(const std::filesystem::path& below, const std::string& choice,
                                       const kivo::simulator::IdentityService& service);

} // namespace demo
