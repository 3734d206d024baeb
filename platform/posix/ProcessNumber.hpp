#pragma once

#include <sys/types.h>

namespace kivo::platform {

/// The number of the calling process, as `getpid()` gives it, without a system call after the first. In a forked child
/// the number is the child's.
pid_t processNumber();

} // namespace kivo::platform
