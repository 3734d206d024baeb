#include "platform/curl/CurlErrors.hpp"

#include <string_view>
#include <system_error>

namespace kivo::platform {
namespace {

std::string serverName(const Url& url) {
    return url.host + " port " + std::to_string(url.port);
}

std::string withReason(std::string text, std::string reason) {
    if (!reason.empty()) {
        // "Connection refused" continues a sentence here; an abbreviation such as SSL stays as it is.
        if (reason.size() > 1 && reason[1] >= 'a' && reason[1] <= 'z') {
            reason[0] = ascii::lower(reason[0]);
        }
        text += ": " + reason;
    }
    return text;
}

std::string systemReason(int number) {
    return number == 0 ? std::string{} : std::system_category().message(number);
}

// libcurl reports an answer that turns malformed in the middle as a failure to receive.
bool isMalformedAnswer(std::string_view detail) {
    return detail.contains("chunked-encoding") || detail.contains("response headers");
}

UrlError brokenAnswer(const std::string& server) {
    return {UrlErrorKind::badAnswer, "The answer from " + server + " is not valid HTTP"};
}

} // namespace

UrlError urlError(const CurlFailure& failure) {
    using enum UrlErrorKind;
    const auto server = serverName(failure.server);
    switch (failure.code) {
    case CURLE_COULDNT_RESOLVE_HOST:
        return {cannotFindHost, "Could not find the host " + failure.server.host};
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
        return {connectionLost,
                withReason(connectionLostError(failure.server).text, systemReason(failure.systemError))};
    case CURLE_OUT_OF_MEMORY:
        // libcurl's code for a line of a head that is longer than libcurl reads.
        return {answerTooLarge, "A line in the head of the answer from " + server + " is too long"};
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_HTTP2:
    case CURLE_URL_MALFORMAT:
        return brokenAnswer(server);
    default:
        return {unknown, withReason("The exchange with " + server + " failed", curl_easy_strerror(failure.code))};
    }
}

UrlError cancelledError() {
    return {UrlErrorKind::cancelled, "The request was cancelled"};
}

UrlError pinMismatchError(const Url& server) {
    return {UrlErrorKind::pinMismatch, "The check of pins refused the certificate of " + serverName(server)};
}

UrlError connectionLostError(const Url& server) {
    return {UrlErrorKind::connectionLost,
            "The connection to " + serverName(server) + " was lost before the answer was complete"};
}

UrlError answerError(HttpAnswer::Fault fault, const HttpLimits& limits, const Url& server) {
    switch (fault) {
    case HttpAnswer::Fault::headTooLarge:
        return {UrlErrorKind::answerTooLarge,
                "The head of the answer is longer than the " + std::to_string(limits.head) + " bytes allowed"};
    case HttpAnswer::Fault::bodyTooLarge:
        return {UrlErrorKind::answerTooLarge,
                "The answer is longer than the " + std::to_string(limits.body) + " bytes allowed"};
    case HttpAnswer::Fault::noLength:
        return {UrlErrorKind::badAnswer, "The answer from " + serverName(server) +
                                             " has neither a length nor chunks, so its end cannot be told from a loss"};
    case HttpAnswer::Fault::malformed:
    case HttpAnswer::Fault::none:
        break;
    }
    return brokenAnswer(serverName(server));
}

std::optional<UrlError> redirectError(const std::optional<Url>& address, const Url& from) {
    if (!address) {
        return brokenAnswer(serverName(from));
    }
    if (address->scheme != "https") {
        return UrlError{UrlErrorKind::unsupportedScheme, "A redirect leads to " + serverName(*address) + " by " +
                                                             address->scheme + ", and only https is followed"};
    }
    return std::nullopt;
}

UrlError tooManyRedirectsError(const Url& last) {
    return {UrlErrorKind::tooManyRedirects, "Too many redirects, the last one to " + serverName(last)};
}

} // namespace kivo::platform
