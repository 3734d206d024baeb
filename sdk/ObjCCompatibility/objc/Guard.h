#pragma once

#include <functional>

namespace kivo::objc {

/// Calls host code. An exception of either language is reported and goes no further.
void guarded(const std::function<void()>& call);

/// Reports an exception that left a completion, as a diagnostic.
void reportException(const char* description);

} // namespace kivo::objc
