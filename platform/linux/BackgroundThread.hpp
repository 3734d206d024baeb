#pragma once

#include <functional>

namespace kivo::platform {

/// Runs `body` on a thread of its own that nobody joins: what it touches, it must own. The thread takes none of the
/// host's signals. `name`, at most 15 characters, is for debuggers.
void startBackgroundThread(const char* name, std::function<void()> body);

} // namespace kivo::platform
