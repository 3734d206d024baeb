#pragma once

#include "platform/curl/CurlOptions.hpp"
#include "platform/curl/CurlSockets.hpp"

#include <curl/curl.h>

#include <optional>
#include <string_view>

namespace kivo::platform {

/// Watches over one exchange, so that its request leaves at most once and never over a connection that has ended.
///
/// libcurl sends a request again when a connection that was used before ends without an answer. The client cannot
/// know then whether the server has read the request. Must stay where it is while the exchange runs. Engine's thread.
class CurlSending {
public:
    CurlSending(CURL* easy, CurlSockets& sockets)
        : easy_{easy}
        , sockets_{sockets} {}

    CurlSending(const CurlSending&) = delete;
    CurlSending& operator=(const CurlSending&) = delete;

    void watch(CurlOptions& options);

    /// Whether the exchange ended because libcurl was about to send again.
    bool wouldRepeat() const { return wouldRepeat_; }

    /// Whether the exchange ended, before a byte of the request had left, at a connection that the server had ended.
    bool isConnectionOver() const { return isConnectionOver_; }

private:
    bool hasLeft() const;
    bool mayConnect();
    bool maySend(std::string_view peer, int localPort);

    template <typename T>
    T info(CURLINFO which) const {
        T value{};
        curl_easy_getinfo(easy_, which, &value);
        return value;
    }

    CURL* const easy_;
    CurlSockets& sockets_;
    /// What had been sent (to a proxy, say) when the request itself was about to leave.
    std::optional<long> sentBefore_;
    bool wouldRepeat_ = false;
    bool isConnectionOver_ = false;
};

} // namespace kivo::platform
