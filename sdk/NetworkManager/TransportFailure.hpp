#pragma once

#include "NetworkManager/NetworkManager.hpp"

#include <kivo/ResponseCode.hpp>

namespace kivo {

/// The code for a request that got no usable answer: `own`, unless the server was not the pinned one.
inline ResponseCode codeOf(const TransportError& error, ResponseCode own) {
    return error.cause == platform::UrlErrorKind::pinMismatch ? ResponseCode::UNSECURE_SERVER_PINNING_FAILED : own;
}

} // namespace kivo
