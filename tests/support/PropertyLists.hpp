#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <string>

namespace kivo::test {

/// A property list with this root, as XML text.
inline std::string propertyList(const std::string& root) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + root + "</plist>";
}

/// The same property list in its binary form.
inline std::string binaryPropertyList(const std::string& xml) {
    plist_t node = nullptr;
    plist_from_memory(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
    char* bytes = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(node, &bytes, &size);
    std::string result{bytes, size};
    plist_to_bin_free(bytes);
    plist_free(node);
    return result;
}

} // namespace kivo::test
