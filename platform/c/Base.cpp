#include "platform/c/Arguments.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/Text.hpp>

#include <new>

struct kivo_string {
    std::string text;
};

namespace kivo::c {
namespace {

void report(const char* function, std::string_view text) noexcept {
    try {
        platform::services().diagnostics->report("host", std::string{function}.append(": ").append(text).append("."));
    } catch (...) {
        // Standard error cannot be written either, so the mistake stays untold.
        return;
    }
}

} // namespace

kivo_status caught(const char* function) noexcept {
    try {
        throw;
    } catch (const Misuse& misuse) {
        report(function, misuse.what());
        return KIVO_MISUSE;
    } catch (const std::bad_alloc&) {
        report(function, "there is no memory");
        return KIVO_NO_MEMORY;
    } catch (const std::exception& exception) {
        report(function, exception.what());
        return KIVO_FAILED;
    } catch (...) {
        report(function, "an unknown exception");
        return KIVO_FAILED;
    }
}

std::string_view viewOf(kivo_text text, const char* what) {
    if (text.data == nullptr && text.length != 0) {
        throw Misuse{std::string{what} + " is null but has a length"};
    }
    const std::string_view view{text.data, text.length};
    if (!text::isUtf8(view)) {
        throw Misuse{std::string{what} + " is not UTF-8"};
    }
    return view;
}

kivo_string* handOver(std::string text) {
    return new kivo_string{std::move(text)};
}

} // namespace kivo::c

extern "C" {

kivo_text kivo_status_name(kivo_status status) {
    switch (status) {
    case KIVO_OK:
        return KIVO_TEXT("KIVO_OK");
    case KIVO_MISUSE:
        return KIVO_TEXT("KIVO_MISUSE");
    case KIVO_NO_MEMORY:
        return KIVO_TEXT("KIVO_NO_MEMORY");
    case KIVO_FAILED:
        return KIVO_TEXT("KIVO_FAILED");
    }
    return KIVO_TEXT("");
}

kivo_text kivo_string_text(const kivo_string* string) {
    return string != nullptr ? kivo::c::textOf(string->text) : KIVO_TEXT("");
}

void kivo_string_free(kivo_string* string) {
    delete string;
}
}
