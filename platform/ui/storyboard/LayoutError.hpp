#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace kivo::platform::storyboard {

/// What does not fit in a storyboard, in one sentence for the person who lays out screens. Never leaves the storyboard.
class LayoutError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Where in a storyboard something stands, in words: file, scene, view and member.
class Where {
public:
    explicit Where(std::string file)
        : words_{std::move(file)} {}

    /// A place inside this one.
    Where in(std::string_view part) const { return Where{words_ + ", " + std::string{part}}; }

    [[noreturn]] void fail(std::string_view problem) const { throw LayoutError{words_ + ": " + std::string{problem}}; }

private:
    std::string words_;
};

inline std::string inQuotes(std::string_view text) {
    return std::string{"\""}.append(text).append("\"");
}

} // namespace kivo::platform::storyboard
