#include "linux/CurlErrors.hpp"

#include "linux/CurlRequest.hpp"

#include <string_view>
#include <system_error>

namespace kivo::platform {
namespace {

std::string serverName(const ParsedUrl& url) {
    return url.host() + " port " + url.port();
}

std::string withReason(std::string text, std::string reason) {
    if (!reason.empty()) {
        // "Connection refused" continues a sentence here; an abbreviation such as SSL stays as it is.
        const bool isWord = reason.size() > 1 && reason[1] >= 'a' && reason[1] <= 'z';
        if (isWord && reason[0] >= 'A' && reason[0] <= 'Z') {
            reason[0] = static_cast<char>(reason[0] - 'A' + 'a');
        }
        text += ": " + reason;
    }
    return text;
}

std::string systemReason(int number) {
    return number == 0 ? std::string{} : std::system_category().message(number);
}

// libcurl reports an answer it cannot make sense of in the middle as a failure to receive.
bool isMalformedAnswer(std::string_view detail) {
    return detail.contains("chunked-encoding") || detail.contains("response headers");
}

UrlError brokenAnswer(const std::string& server) {
    return {UrlErrorKind::badAnswer, "The answer from " + server + " is not valid HTTP"};
}

} // namespace

UrlError urlError(const CurlFailure& failure) {
    using enum UrlErrorKind;
    const ParsedUrl url{failure.url};
    const auto server = serverName(url);
    switch (failure.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return {cannotFindHost, "Could not find the host " + url.host()};
    case CURLE_COULDNT_RESOLVE_PROXY:
        return {cannotFindHost, "Could not find the proxy through which to reach " + server};
    case CURLE_COULDNT_CONNECT:
    case CURLE_PROXY:
    case CURLE_INTERFACE_FAILED:
        return {cannotConnect, withReason("Could not connect to " + server, systemReason(failure.systemError))};
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
        return {serverCertificateUntrusted,
                withReason("The certificate of " + server + " is not trusted", failure.detail)};
    case CURLE_SSL_CACERT_BADFILE:
        return {secureConnectionFailed, "The trusted certificates in " + failure.trustFile + " cannot be read"};
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_USE_SSL_FAILED:
        return {secureConnectionFailed,
                withReason("Could not agree on a secure connection with " + server, failure.detail)};
    case CURLE_OPERATION_TIMEDOUT:
        if (failure.detail.starts_with("Operation too slow")) {
            return {timedOut, "The exchange with " + server + " stood still for too long"};
        }
        return {timedOut,
                "The exchange with " + server + " took longer than " + std::to_string(failure.timeout.count()) + " ms"};
    case CURLE_RECV_ERROR:
        if (isMalformedAnswer(failure.detail)) {
            return brokenAnswer(server);
        }
        [[fallthrough]];
    case CURLE_SEND_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2_STREAM:
    case CURLE_SSL_SHUTDOWN_FAILED:
        return {connectionLost, withReason("The connection to " + server + " was lost before the answer was complete",
                                           systemReason(failure.systemError))};
    case CURLE_UNSUPPORTED_PROTOCOL:
        if (url.scheme() != "https") {
            return {unsupportedScheme,
                    "A redirect leads to " + server + " by " + url.scheme() + ", and only https is followed"};
        }
        return brokenAnswer(server);
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_HTTP2:
    case CURLE_URL_MALFORMAT:
        return brokenAnswer(server);
    case CURLE_TOO_MANY_REDIRECTS:
        return {tooManyRedirects, "Too many redirects, the last one to " + server};
    default:
        return {unknown, withReason("The exchange with " + server + " failed", curl_easy_strerror(failure.code))};
    }
}

UrlError cancelledError() {
    return {UrlErrorKind::cancelled, "The request was cancelled"};
}

UrlError answerTooLargeError(std::size_t limit) {
    return {UrlErrorKind::answerTooLarge, "The answer is longer than the " + std::to_string(limit) + " bytes allowed"};
}

UrlError pinMismatchError(const std::string& url) {
    return {UrlErrorKind::pinMismatch,
            "The certificate of " + serverName(ParsedUrl{url}) + " was refused by the session's delegate"};
}

} // namespace kivo::platform
