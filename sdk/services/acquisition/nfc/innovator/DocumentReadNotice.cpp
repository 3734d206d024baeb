#include "services/acquisition/nfc/innovator/DocumentReadNotice.hpp"

#include "NetworkManager/NetworkManager.hpp"
#include "NetworkManager/StoredSession.hpp"

#include <kivo/platform/Services.hpp>

#include <nlohmann/json.hpp>

#include <memory>
#include <utility>

namespace kivo {

void sendDocumentReadNotice(const std::string& endpoint, const std::string& sessionId,
                            std::function<void(std::optional<platform::Data> answer)> completion) {
    const auto session = storedSession();
    const nlohmann::ordered_json body{{"opaqueId", session ? session->tId : ""}, {"sessionId", sessionId}};
    // The one callback that runs moves the completion away, so that nothing is left to die on the transport's thread.
    const auto held = std::make_shared<decltype(completion)>(std::move(completion));
    const auto answerOnMainQueue = [held](std::optional<platform::Data> answer) {
        platform::services().mainQueue->async(
            [run = std::move(*held), answer = std::move(answer)]() mutable { run(std::move(answer)); });
    };
    NetworkManager::shared().sendRequest(
        endpoint, body, [answerOnMainQueue](platform::Data answer) { answerOnMainQueue(std::move(answer)); },
        [answerOnMainQueue](const TransportError&) { answerOnMainQueue(std::nullopt); });
}

} // namespace kivo
