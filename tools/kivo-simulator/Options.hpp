#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <chrono>
#include <expected>
#include <string>
#include <vector>

namespace simulation {

struct InjectedFault {
    kivo::simulator::Endpoint endpoint;
    kivo::simulator::Fault fault;
};

struct Options {
    /// 0 for a free port.
    int port = 0;
    int controlPort = 0;
    /// Never empty.
    std::vector<std::string> codes;
    std::vector<InjectedFault> faults;
    int retryLimit = 9;
    bool hostPerEndpoint = false;
    /// The file for a copy of the authority's certificate; empty for none.
    std::string certificate;
    /// The file for the records; empty for none.
    std::string records;
    bool json = false;

    /// The join page of the service to check; empty for being a service.
    std::string checked;
    /// The host's key, which the device code of the check's join ends with.
    std::string key = "EXAMPLE-KEY";
    /// The certificates that the check trusts; empty for those of the system.
    std::string trusted;
    std::chrono::seconds timeout{10};
};

/// The options of the command line, or the status to end with when the help was printed or a mistake was told.
std::expected<Options, int> parse(int argc, const char* const* argv);

/// Why a text is no activation code, as the end of a sentence; empty for a code: at most 64 letters,
/// digits, "-" and "_", which fit into an address.
std::string problemOfCode(const std::string& text);

} // namespace simulation
