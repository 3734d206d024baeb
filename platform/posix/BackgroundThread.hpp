#pragma once

#include <functional>
#include <system_error>

namespace kivo::platform {

/// Runs `body` on a thread of its own that nobody joins: what it touches, it must own. The thread takes none of the
/// host's signals but faults. `name`, at most 15 characters, is for debuggers. Gives the error when the system has no
/// more threads.
[[nodiscard]] std::error_code startBackgroundThread(const char* name, std::function<void()> body);

} // namespace kivo::platform
