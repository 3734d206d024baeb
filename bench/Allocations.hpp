#pragma once

#include <cstdint>

namespace kivo::bench {

/// How often this process has asked for memory with `new` so far, on all threads.
std::uint64_t allocations();

} // namespace kivo::bench
