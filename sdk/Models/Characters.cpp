#include "Models/Characters.hpp"

#include <utf8proc.h>

namespace kivo::text {

bool containsLetter(std::string_view text) {
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto left = static_cast<utf8proc_ssize_t>(text.size());
    while (left > 0) {
        utf8proc_int32_t point = 0;
        const auto length = utf8proc_iterate(bytes, left, &point);
        if (length <= 0) {
            ++bytes;
            --left;
            continue;
        }
        if (const auto category = utf8proc_category(point);
            category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_ME) {
            return true;
        }
        bytes += length;
        left -= length;
    }
    return false;
}

} // namespace kivo::text
