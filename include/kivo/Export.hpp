#pragma once

#if !defined(__cplusplus) || __cplusplus < 202100L
#error "Kivo's headers are C++23. Compile with -std=c++23 (GCC 12, clang 17, or newer)."
// There is no such file: the compilation ends here, so that no further error hides the first.
#include <kivo/compile-with-std-c++23>
#endif

#ifndef __cpp_rtti
#error "Kivo's headers need run-time type information: screens ask views for their types. Compile without -fno-rtti."
#include <kivo/compile-without-fno-rtti>
#endif

/// Marks what the shared library offers to a host; everything else stays hidden.
#define KIVO_EXPORT __attribute__((visibility("default")))
