#include "Configuration/session/ApplicationInformation.hpp"

#include "Configuration/environment/SdkBundle.hpp"
#include "Configuration/logging/Log.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "platform/base/Process.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/Text.hpp>

#include <algorithm>
#include <array>

namespace kivo {
namespace {

constexpr std::string_view shortVersionKey = "CFBundleShortVersionString";
constexpr std::string_view buildVersionKey = "CFBundleVersion";

std::string appVersion() {
    const auto main = platform::services().bundles->main();
    return main->infoText(shortVersionKey).value_or("") + "." + main->infoText(buildVersionKey).value_or("");
}

std::string sdkVersion() {
    const auto sdk = sdkBundle();
    return sdk ? sdk->infoText(shortVersionKey).value_or("") : "";
}

std::string deviceModel() {
    auto machine = platform::services().device->machine();
    return text::isUtf8(machine) ? machine : "N/A";
}

Environment::Information collect() {
    auto& security = CommunicationSecurityManager::shared();
    const auto& device = platform::services().device;
    const auto expiry = security.certificateExpiryDates(/*warn=*/false);
    Environment::Information information{
        {"appVersion", appVersion()},
        {"os", "iOS " + device->systemVersion()},
        {"networkType", security.networkType()},
        {"NetworkIpAddress", Environment::networkIpAddress(device->interfaceAddresses())},
        {"networkMacAddress", ""},
        {"deviceModel", deviceModel()},
        {"deviceSerialNo", ""},
        {"expiryDateLeafCert", expiry.leaf},
        {"expiryDateIntermediateCert", expiry.intermediate},
        {"sdkVersion", sdkVersion()},
        {"deviceId", device->identifierForVendor().value_or("")},
        {"apiLevel", "NA"},
    };
    log::debug("Environment", [&] { return "appInfoDict " + log::described(information); });
    return information;
}

} // namespace

const Environment::Information& Environment::applicationInformation() {
    return platform::Process::current().part<Information>([] { return new Information{collect()}; });
}

std::string Environment::networkIpAddress(std::span<const platform::InterfaceAddress> addresses) {
    static constexpr std::array<std::string_view, 8> reported{"en0",     "en2",     "en3",     "en4",
                                                              "pdp_ip0", "pdp_ip1", "pdp_ip2", "pdp_ip3"};
    std::string address;
    for (const auto& entry : addresses) {
        if (entry.family != platform::AddressFamily::other &&
            std::ranges::find(reported, entry.interfaceName) != reported.end()) {
            address = entry.numericHost;
        }
    }
    return address;
}

} // namespace kivo
