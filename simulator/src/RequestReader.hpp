#pragma once

#include "TlsConnections.hpp"

#include <httplib.h>

#include <cstddef>
#include <optional>
#include <string>

namespace kivo::simulator {

/// Reads a request's body, no faster than `bytesPerSecond` where that is given. Absent when the body does not come to
/// its end; the HTTP library has set the status then.
std::optional<std::string> readBody(const httplib::Request& request, const httplib::ContentReader& reader,
                                    const TlsConnections& connections, std::optional<std::size_t> bytesPerSecond);

} // namespace kivo::simulator
