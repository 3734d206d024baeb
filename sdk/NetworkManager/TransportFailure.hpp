#pragma once

#include <kivo/ResponseCode.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <optional>

namespace kivo {

/// The code for a request that got no usable answer: `own`, unless the server was not the pinned one.
inline ResponseCode codeOf(std::optional<platform::UrlErrorKind> cause, ResponseCode own) {
    return cause == platform::UrlErrorKind::pinMismatch ? ResponseCode::UNSECURE_SERVER_PINNING_FAILED : own;
}

} // namespace kivo
