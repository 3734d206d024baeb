#pragma once

#include <curl/curl.h>

#include <memory>
#include <vector>

namespace kivo::platform {

/// A session's cookies, and its TLS sessions, which spare a later connection a full handshake.
///
/// Handles that use the jar must have left it before the jar goes.
class CookieJar {
public:
    CookieJar();
    CookieJar(const CookieJar&) = delete;
    CookieJar& operator=(const CookieJar&) = delete;

    ~CookieJar() { curl_share_cleanup(share_); }

    CURLSH* get() const { return share_; }

private:
    CURLSH* const share_;
};

struct CleanUpHandle {
    void operator()(CURL* easy) const;
};

using EasyHandle = std::unique_ptr<CURL, CleanUpHandle>;

/// A few handles that are kept for the next exchange. One thread.
class CurlHandles {
public:
    EasyHandle take();

    /// Takes a handle back, and off its jar.
    void giveBack(EasyHandle easy);

private:
    std::vector<EasyHandle> spare_;
};

} // namespace kivo::platform
