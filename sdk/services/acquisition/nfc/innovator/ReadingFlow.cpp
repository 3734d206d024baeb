#include "services/acquisition/nfc/innovator/ReadingFlow.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"

#include <string>
#include <string_view>

namespace kivo {
namespace {

using platform::readid::DocumentType;
using platform::readid::NFCWithAccessControlFlow;

constexpr std::string_view function = "setUpReadIDUIFlow()";

std::shared_ptr<platform::readid::UIResources> resourcesFor(const ThemeCustomization* theme) {
    auto resources = ThemeCustomization::passportScanViewCustomization();
    resources->customBundle = theme != nullptr ? theme->appBundle : nullptr;
    if (resources->customStringTableName) {
        log::info(function, [&] { return "Using strings table name " + *resources->customStringTableName; });
    } else {
        log::line(LogLevel::warning, function, "No table name found for scan localization");
    }
    if (theme != nullptr) {
        resources->buttonCornerRadius = theme->primaryButtonCornerRadius;
        resources->buttonFont = theme->primaryButtonFont;
    }
    return resources;
}

} // namespace

std::shared_ptr<NFCWithAccessControlFlow> makeReadingFlow(const ActivationResponse* session,
                                                          const ThemeCustomization* theme) {
    const auto setting = [session](std::string_view key) {
        return session != nullptr ? settingIn(session->idpBiodata, key) : std::string{};
    };
    auto flow = std::make_shared<NFCWithAccessControlFlow>();
    flow->allowedDocumentTypes = {DocumentType::passport, DocumentType::identityCardTD2, DocumentType::identityCardTD1};
    flow->uiResources = resourcesFor(theme);
    flow->baseUrl = setting(KivoResponseKeys::biodataProxy);
    flow->accessKey = setting(KivoResponseKeys::biodataAccessKey);
    flow->instructionsPlayCount = 1;
    flow->shouldOnlyShowInstructionsOnFirstUse = false;
    flow->shouldShowDocumentSelection = false;
    flow->allowSkipReadingAfterAttempts = theme != nullptr ? theme->allowNFCSkipReadingAfterAttempts : 2;
    flow->shouldUsePinning = true;
    if (const auto key = setting(KivoResponseKeys::biodataEncryptKey); !key.empty()) {
        flow->applicationLevelEncryptionPins = {key};
    } else {
        log::info(function, "Biodata encrypt key not found");
    }
    flow->nfcResultScreenConfiguration.nfcResultDataMode = platform::readid::NFCResultDataMode::none;
    flow->vizResultScreenConfiguration.vizResultDataMode = platform::readid::VIZResultDataMode::none;
    flow->shouldShowVIZResult = false;
    flow->shouldShowNFCResult = false;
    flow->shouldPlayShutterSound = false;
    return flow;
}

} // namespace kivo
