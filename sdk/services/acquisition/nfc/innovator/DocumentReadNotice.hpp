#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <functional>
#include <optional>
#include <string>

namespace kivo {

/// Tells the identity service which reading session belongs to the current transaction.
///
/// `completion` runs once on the main queue, with the service's answer or without one when the notice was not
/// delivered. It is destroyed on the main thread, so it may hold a screen.
void sendDocumentReadNotice(const std::string& endpoint, const std::string& sessionId,
                            std::function<void(std::optional<platform::Data> answer)> completion);

} // namespace kivo
