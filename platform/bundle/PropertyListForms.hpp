#pragma once

#include <kivo/platform/Bundle.hpp>

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace kivo::platform {

/// How deep the lists and dictionaries of a property list may be nested.
inline constexpr int deepestPropertyList = 100;

/// Counts what a property list unfolds to. A file may refer to one value many times, so its own size is no bound.
class PropertyListBudget {
public:
    /// Whether there is still room for a value with so many bytes of text or data.
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

/// The two forms of a property list. The error follows a file's name.
std::expected<PropertyValue, std::string> readXmlPropertyList(std::string_view bytes);
std::expected<PropertyValue, std::string> readBinaryPropertyList(std::string_view bytes);

inline constexpr auto tooDeepPropertyList = "is nested too deeply for a property list";
inline constexpr auto tooLargePropertyList = "holds too much for a property list";

} // namespace kivo::platform
