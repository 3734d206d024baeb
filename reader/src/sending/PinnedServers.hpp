#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <memory>

namespace kivo::reader {

/// Lets requests through only to servers whose key is in the host's list of pins ("readid_certificates" of the main
/// bundle). Null where the host has no list and the deployment asks for none. A list that is missing or cannot be read
/// lets nothing through.
std::shared_ptr<platform::UrlSessionDelegate> pinnedServers();

} // namespace kivo::reader
