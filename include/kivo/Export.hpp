#pragma once

#if !defined(__cplusplus) || __cplusplus < 202100L
#error "Kivo's headers are C++23. Compile with -std=c++23 (GCC 12, clang 17, or newer)."
// There is no such file: the compilation ends here, so that no further error hides the first.
#include <kivo/compile-with-std-c++23>
#endif

/// Marks what the shared library offers to a host; everything else stays hidden.
#define KIVO_EXPORT __attribute__((visibility("default")))
