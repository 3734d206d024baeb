#include "platform/curl/CurlHandles.hpp"

#include <utility>

namespace kivo::platform {
namespace {

constexpr std::size_t spareHandles = 8;

/// Takes the handle off the cookie jar. Frees memory that libcurl would otherwise leak at a reset.
void leaveCookieJar(CURL* easy) {
    curl_easy_setopt(easy, CURLOPT_COOKIEFILE, nullptr);
    curl_easy_setopt(easy, CURLOPT_SHARE, nullptr);
}

/// Whether the next exchange can have a receive buffer of its own size. A handle that ended while others used its
/// connection keeps its buffer, and refuses another size.
bool mayTakeBuffer(CURL* easy) {
    return curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, static_cast<long>(CURL_MAX_WRITE_SIZE)) == CURLE_OK;
}

} // namespace

CookieJar::CookieJar()
    : share_{curl_share_init()} {
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
}

void CleanUpHandle::operator()(CURL* easy) const {
    leaveCookieJar(easy);
    curl_easy_cleanup(easy);
}

EasyHandle CurlHandles::take() {
    if (spare_.empty()) {
        return EasyHandle{curl_easy_init()};
    }
    auto easy = std::move(spare_.back());
    spare_.pop_back();
    return easy;
}

void CurlHandles::giveBack(EasyHandle easy) {
    leaveCookieJar(easy.get());
    if (spare_.size() < spareHandles) {
        curl_easy_reset(easy.get());
        if (mayTakeBuffer(easy.get())) {
            spare_.push_back(std::move(easy));
        }
    }
}

void setCommonOptions(CurlOptions& options) {
    options.set(CURLOPT_NOSIGNAL, 1L);
    // Otherwise giving a request up would wait for a name server that does not answer.
    options.set(CURLOPT_QUICK_EXIT, 1L);
    options.set(CURLOPT_PROTOCOLS_STR, "https");
    options.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    options.set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    options.set(CURLOPT_SSL_VERIFYPEER, 1L);
    options.set(CURLOPT_SSL_VERIFYHOST, 2L);
    options.set(CURLOPT_TCP_NODELAY, 1L);
    options.set(CURLOPT_TCP_KEEPALIVE, 1L);
    // The first probe leaves after a minute without a byte. The second ends a connection whose server has not confirmed
    // the first (TCP_USER_TIMEOUT).
    options.set(CURLOPT_TCP_KEEPINTVL, 15L);
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // An empty name turns the session's shared cookie jar on, without a file.
    options.set(CURLOPT_COOKIEFILE, "");
}

} // namespace kivo::platform
