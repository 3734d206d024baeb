#include "platform/c/Arguments.hpp"

#include <kivo/ResponseCode.hpp>
#include <kivo/c/codes.h>

#include <algorithm>
#include <vector>

namespace {

using namespace kivo;

/// Never destroyed, because hosts keep pointers to the rows.
const std::vector<kivo_response_code>& rows() {
    static const auto& made = *new std::vector<kivo_response_code>{[] {
        std::vector<kivo_response_code> all;
        for (const auto each : allResponseCodes()) {
            all.push_back({.size = sizeof(kivo_response_code),
                           .code = static_cast<kivo_code>(code(each)),
                           .name = c::textOf(name(each)),
                           .message = c::textOf(message(each)),
                           .generic_message = c::textOf(genericMessage(each))});
        }
        return all;
    }()};
    return made;
}

const kivo_response_code* rowOf(std::optional<ResponseCode> code) {
    return code ? &rows()[static_cast<std::size_t>(*code)] : nullptr;
}

constexpr const kivo_response_code* none = nullptr;

} // namespace

extern "C" {

bool kivo_response_code_is_cancellation(int32_t code) {
    return c::resultOf(__func__, false, [&] {
        const auto known = responseCode(code);
        return known && isCancellation(*known);
    });
}

const kivo_response_code* kivo_response_code_of(int32_t code) {
    return c::resultOf(__func__, none, [&] { return rowOf(responseCode(code)); });
}

const kivo_response_code* kivo_response_code_named(kivo_text name) {
    return c::resultOf(__func__, none, [&] { return rowOf(responseCodeNamed(c::viewOf(name, "name"))); });
}

const kivo_response_code* kivo_response_code_at(size_t index) {
    return c::resultOf(__func__, none, [&] { return index < rows().size() ? &rows()[index] : nullptr; });
}
}
