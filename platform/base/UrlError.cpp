#include <kivo/platform/UrlSession.hpp>

namespace kivo::platform {

std::string_view name(UrlErrorKind kind) {
    switch (kind) {
    case UrlErrorKind::badUrl:
        return "badUrl";
    case UrlErrorKind::unsupportedScheme:
        return "unsupportedScheme";
    case UrlErrorKind::cannotFindHost:
        return "cannotFindHost";
    case UrlErrorKind::cannotConnect:
        return "cannotConnect";
    case UrlErrorKind::secureConnectionFailed:
        return "secureConnectionFailed";
    case UrlErrorKind::serverCertificateUntrusted:
        return "serverCertificateUntrusted";
    case UrlErrorKind::pinMismatch:
        return "pinMismatch";
    case UrlErrorKind::timedOut:
        return "timedOut";
    case UrlErrorKind::connectionLost:
        return "connectionLost";
    case UrlErrorKind::badAnswer:
        return "badAnswer";
    case UrlErrorKind::tooManyRedirects:
        return "tooManyRedirects";
    case UrlErrorKind::answerTooLarge:
        return "answerTooLarge";
    case UrlErrorKind::cancelled:
        return "cancelled";
    case UrlErrorKind::unknown:
        return "unknown";
    }
    return "";
}

} // namespace kivo::platform
