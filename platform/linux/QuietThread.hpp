#pragma once

#include <functional>
#include <system_error>

namespace kivo::platform {

/// Runs `body` on a thread of its own that takes none of the host's signals and that nobody waits for; returns the
/// error when the system has no more threads.
std::error_code startQuietThread(std::function<void()> body);

} // namespace kivo::platform
