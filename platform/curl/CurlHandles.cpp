#include "platform/curl/CurlHandles.hpp"

#include <utility>

namespace kivo::platform {
namespace {

constexpr std::size_t spareHandles = 8;

/// Takes the handle off the cookie jar, and frees what libcurl would otherwise lose at a reset.
void leaveCookieJar(CURL* easy) {
    curl_easy_setopt(easy, CURLOPT_COOKIEFILE, nullptr);
    curl_easy_setopt(easy, CURLOPT_SHARE, nullptr);
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
        spare_.push_back(std::move(easy));
    }
}

} // namespace kivo::platform
