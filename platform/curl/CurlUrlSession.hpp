#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <filesystem>
#include <memory>

namespace kivo::platform {

/// Sessions on libcurl. `trustedCertificates` (PEM) replaces the system's store of certificates. When it is empty,
/// `$SSL_CERT_FILE` replaces the store, if set.
std::shared_ptr<UrlSessions> makeCurlUrlSessions(std::filesystem::path trustedCertificates);

} // namespace kivo::platform
