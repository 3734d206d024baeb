#pragma once

#include <string_view>

namespace kivo::simulator {

// What the simulated server tells the simulated vendor's library; for real vendors it is a sealed text.
inline constexpr std::string_view scanAcceptedBlob = "simulated-blob:accepted";
inline constexpr std::string_view scanAgainBlob = "simulated-blob:scan-again";

} // namespace kivo::simulator
