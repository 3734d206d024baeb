#pragma once

#include <httplib.h>

namespace simulation {

/// An HTTP server that ends a connection whose request is too long or takes too long. The library alone would keep a
/// line, the headers or the head of a part of a body in memory at any length.
///
/// Each connection serves one request, so the rest of a refused request is never taken for a request.
class BoundedServer final : public httplib::Server {
public:
    /// The bytes of a request line with its headers, and of a body with its chunks as it is sent.
    static constexpr std::size_t mostOfHead = std::size_t{64} * 1024;
    static constexpr std::size_t mostOfBody = std::size_t{4} * 1024 * 1024;

private:
    bool process_and_close_socket(socket_t socket) override;
};

} // namespace simulation
