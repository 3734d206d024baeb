#include "c/Handles.hpp"
#include "c/HostScan.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/c/face_scanner.h>
#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/Services.hpp>

#include <functional>
#include <memory>
#include <string>
#include <utility>

struct kivo_initialization {
    std::function<void(bool)> completion;
};

namespace {

using namespace kivo;

constexpr std::size_t mostBytesOfUserAgent = 4096;

using Initializations = c::Handles<kivo_initialization>;

void takeUserAgent(void* taker, kivo_text text) {
    c::statusOf(__func__, [&] {
        auto agent = c::stringOf(text, "the user agent");
        if (agent.size() > mostBytesOfUserAgent) {
            throw c::Misuse{"the user agent has more than 4 KiB"};
        }
        *static_cast<std::string*>(taker) = std::move(agent);
    });
}

class HostFaceScanner final : public platform::FaceTec {
public:
    explicit HostFaceScanner(const kivo_face_scanner& scanner)
        : scanner_{scanner} {}

    void initializeInProductionMode(const std::string& productionKey, const std::string& deviceKeyIdentifier,
                                    const std::string& faceScanEncryptionKey,
                                    std::function<void(bool)> completion) override {
        initialize({.size = sizeof(kivo_scanner_keys),
                    .production = true,
                    .production_key = c::textOf(productionKey),
                    .device_key_identifier = c::textOf(deviceKeyIdentifier),
                    .face_scan_encryption_key = c::textOf(faceScanEncryptionKey)},
                   std::move(completion));
    }

    void initializeInDevelopmentMode(const std::string& deviceKeyIdentifier, const std::string& faceScanEncryptionKey,
                                     std::function<void(bool)> completion) override {
        initialize({.size = sizeof(kivo_scanner_keys),
                    .production = false,
                    .production_key = c::textOf(""),
                    .device_key_identifier = c::textOf(deviceKeyIdentifier),
                    .face_scan_encryption_key = c::textOf(faceScanEncryptionKey)},
                   std::move(completion));
    }

    void setLanguage(std::string_view language) override { tell(scanner_.set_language, std::string{language}); }

    std::shared_ptr<platform::FaceTecCustomization> makeCustomization() override {
        return std::make_shared<platform::FaceTecCustomization>();
    }

    // The looks of a vendor's screens are the host's own business in C.
    void setCustomization(std::shared_ptr<platform::FaceTecCustomization> /*customization*/) override {}

    void setLowLightCustomization(std::shared_ptr<platform::FaceTecCustomization> /*customization*/) override {}

    void setOverrideResultScreenSuccessMessage(const std::string& message) override {
        tell(scanner_.set_success_message, message);
    }

    std::string createFaceTecAPIUserAgentString(const std::string& sessionId) override {
        std::string agent;
        if (scanner_.user_agent != nullptr) {
            scanner_.user_agent(scanner_.user, c::textOf(sessionId), takeUserAgent, &agent);
        }
        return agent;
    }

    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> faceScanProcessor,
                    const std::string& sessionToken) override {
        return std::make_shared<c::HostScanScreen>(scanner_, std::move(faceScanProcessor), sessionToken);
    }

    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> idScanProcessor,
                    const std::string& sessionToken) override {
        return std::make_shared<c::HostScanScreen>(scanner_, std::move(idScanProcessor), sessionToken);
    }

private:
    void initialize(const kivo_scanner_keys& keys, std::function<void(bool)> completion) {
        scanner_.initialize(scanner_.user, &keys, Initializations::shared().add({std::move(completion)}));
    }

    void tell(void (*function)(void* user, kivo_text text), const std::string& text) const {
        if (function != nullptr) {
            function(scanner_.user, c::textOf(text));
        }
    }

    kivo_face_scanner scanner_;
};

} // namespace

extern "C" {

kivo_status kivo_face_scanner_install(const kivo_face_scanner* scanner) {
    return c::statusOf(__func__, [&] {
        const auto given = c::structureOf(scanner, "scanner");
        c::notNull(given.initialize, "initialize");
        c::notNull(given.start, "start");
        c::notNull(given.proceed, "proceed");
        c::notNull(given.cancel, "cancel");
        platform::Services services;
        services.faceTec = std::make_shared<HostFaceScanner>(given);
        platform::install(services);
    });
}

kivo_status kivo_face_scanner_initialized(kivo_initialization* initialization, bool success) {
    return c::statusOf(__func__, [&] {
        const auto ended = Initializations::shared().take(initialization, "initialization");
        // On the main queue, also when the host answers at once.
        platform::services().mainQueue->async(
            [completion = std::move(ended->completion), success] { completion(success); });
    });
}
}
