#pragma once

#include "Options.hpp"
#include "Road.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace demo {

/// Prints the road as a table for people, or as JSON lines for machines.
class Report {
public:
    Report(std::FILE* out, bool json)
        : out_{out}
        , json_{json} {}

    void begin(const Options& options, const kivo::simulator::IdentityService& service);
    void step(const Step& step);
    void end(bool allAsExpected);

    /// Prints a line for each session where there was more than one session.
    void summary() const;

    /// Prints the number of pictures and their folder.
    void pictures(int count, const std::string& folder) const;

private:
    struct Session {
        std::string version;
        int steps = 0;
        int withheld = 0;
        std::size_t bytesSent = 0;
        std::chrono::microseconds took{};
        bool isAsExpected = false;
    };

    std::FILE* const out_;
    const bool json_;
    std::vector<Session> sessions_;
};

} // namespace demo
