#pragma once

#include <kivo/c/base.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace kivo::c {

/// A mistake in a host's call. The text completes a sentence that begins with the function's name.
class Misuse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reports the exception in flight, and gives its status. `function` is the name that the host called.
kivo_status caught(const char* function) noexcept;

/// Runs `body`; no exception leaves the library.
template <class Body>
kivo_status statusOf(const char* function, Body body) noexcept {
    try {
        body();
        return KIVO_OK;
    } catch (...) {
        return caught(function);
    }
}

/// The result of `body`, or `otherwise` when it throws.
template <class Result, class Body>
Result resultOf(const char* function, Result otherwise, Body body) noexcept {
    try {
        return body();
    } catch (...) {
        caught(function);
        return otherwise;
    }
}

} // namespace kivo::c
