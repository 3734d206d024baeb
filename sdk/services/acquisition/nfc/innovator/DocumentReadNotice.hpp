#pragma once

#include <kivo/ResponseCode.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <expected>
#include <functional>
#include <string>

namespace kivo {

/// The service's answer, or the code for a notice that was not delivered.
using NoticeOutcome = std::expected<platform::Data, ResponseCode>;

/// Tells the identity service which reading session belongs to the current transaction.
///
/// `completion` runs once, on the main queue. It is destroyed there too, so it may hold a screen.
void sendDocumentReadNotice(const std::string& endpoint, const std::string& sessionId,
                            std::function<void(const NoticeOutcome& outcome)> completion);

} // namespace kivo
