#include "platform/curl/CurlOptions.hpp"

namespace kivo::platform {

void setCommonOptions(CurlOptions& options) {
    options.set(CURLOPT_NOSIGNAL, 1L);
    // Otherwise giving up a request would wait for a name server that does not answer.
    options.set(CURLOPT_QUICK_EXIT, 1L);
    options.set(CURLOPT_PROTOCOLS_STR, "https");
    options.set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    options.set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    options.set(CURLOPT_SSL_VERIFYPEER, 1L);
    options.set(CURLOPT_SSL_VERIFYHOST, 2L);
    options.set(CURLOPT_TCP_NODELAY, 1L);
    options.set(CURLOPT_TCP_KEEPALIVE, 1L);
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // No file: this turns the session's shared cookie jar on.
    options.set(CURLOPT_COOKIEFILE, "");
}

} // namespace kivo::platform
