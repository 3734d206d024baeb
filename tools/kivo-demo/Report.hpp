#pragma once

#include "Options.hpp"
#include "Road.hpp"

#include <kivo/simulator/IdentityService.hpp>

namespace demo {

/// Prints the road as a table for people, or as JSON lines for machines.
class Report {
public:
    explicit Report(bool json)
        : json_{json} {}

    void begin(const Options& options, const kivo::simulator::IdentityService& service) const;
    void step(const Step& step);
    void end(bool allAsExpected) const;

private:
    const bool json_;
    int steps_ = 0;
};

} // namespace demo
