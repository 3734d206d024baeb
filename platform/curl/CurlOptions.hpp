#pragma once

#include <curl/curl.h>

namespace kivo::platform {

/// Sets a handle's options and remembers the first one that was refused.
class CurlOptions {
public:
    explicit CurlOptions(CURL* easy)
        : easy_{easy} {}

    template <typename Value>
    void set(CURLoption option, Value value) {
        // In parentheses, because the macro of this name wants to see constants.
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

/// What holds for every request of every session.
void setCommonOptions(CurlOptions& options);

} // namespace kivo::platform
