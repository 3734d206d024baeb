#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

/// libFuzzer calls this function, which each target defines, with every input. The program ends abnormally on a
/// finding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace kivo::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the program when a reader has broken a promise that no sanitizer checks.
inline void require(bool kept) {
    if (!kept) {
        std::abort();
    }
}

} // namespace kivo::fuzz
