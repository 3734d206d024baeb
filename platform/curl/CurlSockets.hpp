#pragma once

#include <curl/curl.h>

#include <string_view>
#include <vector>

namespace kivo::platform {

/// The sockets of one engine's connections. Engine's thread.
class CurlSockets {
public:
    curl_socket_t open(const curl_sockaddr& address);
    void close(curl_socket_t socket);

    /// Whether the server has ended the connection from `localPort` to `peer`, or, with `isSilent`, says something
    /// although nothing was asked. libcurl notices neither: to libcurl the alert that closes a connection is a sign of
    /// life.
    bool hasEnded(std::string_view peer, int localPort, bool isSilent) const;

private:
    std::vector<curl_socket_t> open_;
};

} // namespace kivo::platform
