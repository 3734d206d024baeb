#include "services/acquisition/RetryLimit.hpp"

#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "ui/Overlays.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>

#include <cstddef>

namespace kivo {

bool refusesFurtherAttempt(platform::ViewController& screen) {
    if (!Attempts::shared().areUsedUp()) {
        return false;
    }
    const auto texts = platform::services().bundles->main();
    ui::showAlert(screen, texts->localizedString("Retry_Limit_Title"), texts->localizedString("Retry_Limit_Message"),
                  {platform::localizedText("OK")}, [](std::size_t) {});
    return true;
}

void countAttempt(const ActivationResponse* session) {
    if (session && Attempts::shared().shouldApplyRetryLimit()) {
        CommunicationSecurityManager::shared().updateRetryCountLimitOnServer(session);
    }
}

} // namespace kivo
