#pragma once

#include "platform/curl/CurlUrlSession.hpp"
#include "support/TestTlsServer.hpp"

#include <cstddef>
#include <memory>
#include <utility>

/// Sessions that trust the certificate of a test's server.
namespace kivo::test {

inline std::shared_ptr<platform::UrlSession> sessionFor(const TestTlsServer& server,
                                                        platform::UrlSessionConfiguration configuration = {},
                                                        std::shared_ptr<platform::UrlSessionDelegate> judge = {}) {
    return platform::makeCurlUrlSessions(server.certificateFile())->make(std::move(configuration), std::move(judge));
}

/// The answers of a session whose requests share an HTTP/2 connection are at most this long.
inline constexpr std::size_t shortAnswers = 65'536;

inline std::shared_ptr<platform::UrlSession> sharingSession(const TestTlsServer& server,
                                                            std::shared_ptr<platform::UrlSessionDelegate> judge = {}) {
    return sessionFor(server, {.responseLimit = shortAnswers}, std::move(judge));
}

} // namespace kivo::test
