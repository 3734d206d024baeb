#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// What libFuzzer calls with each input; the program that defines this function ends abnormally on a finding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace kivo::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the program unless the reader kept a promise that no sanitizer knows of.
inline void require(bool kept) {
    if (!kept) {
        std::abort();
    }
}

} // namespace kivo::fuzz
