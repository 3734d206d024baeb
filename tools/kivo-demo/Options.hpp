#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace demo {

struct InjectedFault {
    kivo::simulator::Endpoint endpoint;
    std::string name;
    kivo::simulator::Fault fault;
};

struct Options {
    std::string version = "18";
    std::vector<InjectedFault> faults;
    /// What the host's bundle lists as pins; empty for a bundle without a list.
    std::string pin;
    /// Where to put pictures of the screens; empty for none.
    std::string screens;
    /// Whether the right code is scanned, not typed.
    bool scan = false;
    /// The picture that it is scanned from; empty for one of the simulator's.
    std::string scanFile;
    bool json = false;
    bool log = false;
    bool help = false;

    /// Whether every step is to end well.
    bool isSmooth() const { return faults.empty() && pin != "other" && pin != "empty"; }
};

/// What the command line asks for, or a sentence about what is wrong with it.
std::expected<Options, std::string> parse(const std::vector<std::string>& arguments);

std::string usage();

} // namespace demo
