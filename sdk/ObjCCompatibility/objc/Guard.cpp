// Plain C++ and not Objective-C++, because only C++ exception handling stops exceptions of both languages.
#include "Guard.h"

#include <kivo/platform/Services.hpp>

#include <exception>
#include <string>

namespace kivo::objc {

void guarded(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::exception& exception) {
        reportException(exception.what());
    } catch (...) {
        reportException("an exception of unknown kind");
    }
}

void reportException(const char* description) {
    platform::services().diagnostics->report("objc", std::string{"a completion must not throw, but threw "} +
                                                         (description ? description : "an exception"));
}

} // namespace kivo::objc
