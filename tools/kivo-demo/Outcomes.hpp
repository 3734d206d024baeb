#pragma once

#include <expected>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace demo {

/// One way in which a vendor's screens can end a step, named by the code that it has for the host.
struct ScreenOutcome {
    std::string_view screen;
    std::string_view code;
    /// The vendor's own number for it.
    int status;
    /// Interface version 18 keeps it from the host, who has seen the person leave.
    bool isLeaving = false;
};

/// All that can be asked for, screen by screen.
std::span<const ScreenOutcome> screenOutcomes();

/// The outcomes in a list such as "document=NO_CHIP,face=TIMEOUT", or a sentence about what is wrong with it.
std::expected<std::vector<ScreenOutcome>, std::string> parseOutcomes(const std::string& list);

} // namespace demo
