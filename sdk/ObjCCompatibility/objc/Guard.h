#pragma once

#include <functional>

namespace kivo::objc {

/// Calls host code; what it throws, in whichever language, is reported and goes no further.
void guarded(const std::function<void()>& call);

/// Tells the person who runs the host of an exception that a completion let out.
void reportException(const char* description);

} // namespace kivo::objc
