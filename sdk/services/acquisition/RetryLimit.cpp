#include "services/acquisition/RetryLimit.hpp"

#include "Configuration/settings/Settings.hpp"
#include "NetworkManager/NetworkManager.hpp"
#include "ui/Alerts.hpp"

#include <kivo/platform/Services.hpp>

#include <cstddef>

namespace kivo {

bool refusesFurtherAttempt(platform::ViewController& screen) {
    if (!Settings::shared().shouldApplyRetryLimit || NetworkManager::shared().retryLimit >= 1) {
        return false;
    }
    const auto texts = platform::services().bundles->main();
    ui::showAlert(screen, texts->localizedString("Retry_Limit_Title"), texts->localizedString("Retry_Limit_Message"),
                  {"OK"}, [](std::size_t) {});
    return true;
}

} // namespace kivo
