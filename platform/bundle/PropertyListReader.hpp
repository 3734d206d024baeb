#pragma once

#include <kivo/platform/Bundle.hpp>

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace kivo::platform {

// The error of every reader follows a file's name in a sentence. A date becomes a text such as 2026-01-31T08:15:00Z. A
// value for which `PropertyValue` has no type is left out.

/// The greatest depth of nested lists and dictionaries.
inline constexpr int deepestPropertyList = 100;

/// Counts the values of a property list. A file may refer to one value many times, so the file's size is no bound.
class PropertyListBudget {
public:
    /// Takes room for a value with so many bytes of text or data; false when there is none left.
    bool takes(std::size_t bytes = 0) {
        if (values_ == 0 || bytes > bytes_) {
            return false;
        }
        --values_;
        bytes_ -= bytes;
        return true;
    }

private:
    std::size_t values_ = 100'000;
    std::size_t bytes_ = std::size_t{8} << 20;
};

inline constexpr auto tooDeepPropertyList = "is nested too deeply for a property list";
inline constexpr auto tooLargePropertyList = "holds too much for a property list";

std::expected<PropertyValue, std::string> readXmlPropertyList(std::string_view bytes);
std::expected<PropertyValue, std::string> readBinaryPropertyList(std::string_view bytes);

/// Reads a property list of either form.
inline std::expected<PropertyValue, std::string> readPropertyList(std::string_view bytes) {
    return bytes.starts_with("bplist") ? readBinaryPropertyList(bytes) : readXmlPropertyList(bytes);
}

} // namespace kivo::platform
