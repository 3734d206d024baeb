#pragma once

#include "Outcomes.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace demo {

struct InjectedFault {
    kivo::simulator::Endpoint endpoint;
    std::string name;
    kivo::simulator::Fault fault;
};

/// The interface versions of the library.
inline const std::vector<std::string> everyVersion{"14", "15", "16", "17", "18"};

struct Options {
    std::string version = "18";
    std::vector<InjectedFault> faults;
    /// How the vendors' screens end; one without an entry ends well.
    std::vector<ScreenOutcome> outcomes;
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

    const ScreenOutcome* outcomeOf(std::string_view screen) const;

    /// Whether the version keeps from the host how a screen ends that was asked for.
    bool withholds(std::string_view screen) const;

    /// Whether no step is to be met by a fault.
    bool isSmooth() const { return faults.empty() && pin != "other" && pin != "empty"; }
};

/// What the command line asks for, or a sentence about what is wrong with it.
std::expected<Options, std::string> parse(const std::vector<std::string>& arguments);

std::string usage();

} // namespace demo
