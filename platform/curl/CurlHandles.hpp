#pragma once

#include <curl/curl.h>

#include <memory>
#include <vector>

namespace kivo::platform {

/// A session's cookies, and its TLS sessions, which spare a later connection a full handshake.
///
/// Handles must have left the jar before the jar is destroyed.
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

/// Keeps a few handles for the next exchange. For one thread.
class CurlHandles {
public:
    EasyHandle take();

    /// Takes a handle back and off its cookie jar.
    void giveBack(EasyHandle easy);

private:
    std::vector<EasyHandle> spare_;
};

/// Sets a handle's options and remembers the first refusal.
class CurlOptions {
public:
    explicit CurlOptions(CURL* easy)
        : easy_{easy} {}

    template <typename Value>
    void set(CURLoption option, Value value) {
        // In parentheses, because the macro of the same name accepts constants only.
        const auto code = (curl_easy_setopt)(easy_, option, value);
        if (result_ == CURLE_OK) {
            result_ = code;
        }
    }

    CURLcode result() const { return result_; }

private:
    CURL* const easy_;
    CURLcode result_ = CURLE_OK;
};

/// Sets the options of every request of every session.
void setCommonOptions(CurlOptions& options);

} // namespace kivo::platform
