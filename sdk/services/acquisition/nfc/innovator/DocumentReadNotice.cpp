#include "services/acquisition/nfc/innovator/DocumentReadNotice.hpp"

#include "NetworkManager/NetworkManager.hpp"
#include "NetworkManager/StoredSession.hpp"

#include <kivo/platform/Services.hpp>

#include <memory>
#include <utility>

namespace kivo {

void sendDocumentReadNotice(const std::string& endpoint, const std::string& sessionId,
                            std::function<void(const NoticeOutcome& outcome)> completion) {
    const auto session = storedSession();
    const auto body =
        json::Value::object({{"opaqueId", session ? session->tId : std::string{}}, {"sessionId", sessionId}});
    // The one callback that runs moves the completion away, so that nothing is left to die on the transport's thread.
    const auto held = std::make_shared<decltype(completion)>(std::move(completion));
    const auto finish = [held](NoticeOutcome outcome) {
        platform::services().mainQueue->async([run = std::move(*held), outcome = std::move(outcome)] { run(outcome); });
    };
    // The document screen waits for the answer, so the notice must not queue behind the notices that nothing waits for.
    NetworkManager::shared().sendRequest(
        endpoint, body, [finish](platform::Data answer) { finish(std::move(answer)); },
        [finish](const TransportError& error) {
            finish(std::unexpected{codeOf(error.cause, ResponseCode::SERVER_ERROR)});
        });
}

} // namespace kivo
