#pragma once

#include "Models/SessionKeys.hpp"

#include <kivo/ResponseCode.hpp>
#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>

/// The parts of a document reading: its configuration, the codes for its failures, and the notice to the service.
namespace kivo {

/// The vendor's configuration for a reading in this session, with this theme's looks; either may be null.
std::shared_ptr<platform::readid::NFCWithAccessControlFlow> makeReadingFlow(const ActivationResponse* session,
                                                                            const ThemeCustomization* theme);

/// The code for a failed reading. Where the session has a document list, a person who leaves the reading returns to the
/// list, which is not a cancellation.
ResponseCode readingFailureCode(platform::readid::FailureReason reason, bool isDocListAvailable);

/// The service's answer, or the code for a notice that was not delivered.
using NoticeOutcome = std::expected<platform::Data, ResponseCode>;

/// Tells the identity service which reading session belongs to the current transaction.
///
/// `completion` runs once, on the main queue, and is destroyed on the main queue as well, so it may hold a screen.
void sendDocumentReadNotice(const std::string& endpoint, const std::string& sessionId,
                            std::function<void(const NoticeOutcome& outcome)> completion);

} // namespace kivo
