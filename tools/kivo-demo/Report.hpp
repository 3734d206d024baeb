#pragma once

#include "Options.hpp"
#include "Road.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <cstdio>

namespace demo {

/// Prints the road as a table for people, or as JSON lines for machines.
class Report {
public:
    Report(std::FILE* out, bool json)
        : out_{out}
        , json_{json} {}

    void begin(const Options& options, const kivo::simulator::IdentityService& service) const;
    void step(const Step& step);
    void end(bool allAsExpected) const;

    /// Tells where the pictures are.
    void pictures(int count, const std::string& folder) const;

private:
    std::FILE* const out_;
    const bool json_;
    int steps_ = 0;
    int withheld_ = 0;
};

} // namespace demo
