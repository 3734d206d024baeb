#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <filesystem>
#include <memory>

namespace kivo::platform {

/// Sessions on libcurl. `trustedCertificates` (PEM) replaces the system's store; empty, `$SSL_CERT_FILE` does, and
/// without that the system's store holds.
std::shared_ptr<UrlSessions> makeCurlUrlSessions(std::filesystem::path trustedCertificates);

} // namespace kivo::platform
