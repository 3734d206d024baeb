#pragma once

#include <functional>
#include <system_error>

namespace kivo::platform {

/// Runs `body` on a new thread that is never joined, so `body` must own everything that it uses. The thread receives no
/// signal of the host but faults. `name`, at most 15 characters, is for debuggers. Returns the error when the system
/// has no more threads.
[[nodiscard]] std::error_code startBackgroundThread(const char* name, std::function<void()> body);

} // namespace kivo::platform
