#pragma once

#include <expected>
#include <string>
#include <vector>

namespace pins {

struct Options {
    /// Files and servers.
    std::vector<std::string> sources;
    /// The kind of certificate to keep, "leaf" or "intermediate"; empty for all.
    std::string only;
    /// The list to add to; empty for none. Likewise the one to look into.
    std::string write;
    std::string check;
    bool help = false;
};

/// What the command line asks for, or a sentence about what is wrong with it.
std::expected<Options, std::string> parse(const std::vector<std::string>& arguments);

std::string usage();

} // namespace pins
