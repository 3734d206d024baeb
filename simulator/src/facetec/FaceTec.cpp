#include "ScanScreen.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/simulator/FaceTec.hpp>

#include <algorithm>
#include <utility>

namespace kivo::simulator {

FaceTec::FaceTec()
    : memory_{std::make_shared<FaceTecMemory>()} {}

FaceTec::~FaceTec() = default;

const std::string& FaceTec::successMessage() const {
    return memory_->successMessage;
}

std::vector<ScanRecord> FaceTec::sessions() const {
    std::vector<ScanRecord> all;
    all.reserve(memory_->sessions.size());
    for (const auto& session : memory_->sessions) {
        all.push_back(*session);
    }
    return all;
}

void FaceTec::forgetSessions() {
    std::erase_if(memory_->sessions, [](const auto& each) { return each->isDone; });
    initializations_.clear();
}

const std::vector<std::string>& FaceTec::violations() const {
    return memory_->violations;
}

void FaceTec::initializeInProductionMode(const std::string& productionKey, const std::string& deviceKeyIdentifier,
                                         const std::string& faceScanEncryptionKey,
                                         std::function<void(bool)> completion) {
    initialize({.isProduction = true,
                .productionKey = productionKey,
                .deviceKeyIdentifier = deviceKeyIdentifier,
                .faceScanEncryptionKey = faceScanEncryptionKey},
               std::move(completion));
}

void FaceTec::initializeInDevelopmentMode(const std::string& deviceKeyIdentifier,
                                          const std::string& faceScanEncryptionKey,
                                          std::function<void(bool)> completion) {
    initialize({.isProduction = false,
                .productionKey = {},
                .deviceKeyIdentifier = deviceKeyIdentifier,
                .faceScanEncryptionKey = faceScanEncryptionKey},
               std::move(completion));
}

void FaceTec::initialize(Initialization initialization, std::function<void(bool)> completion) {
    initializations_.push_back(std::move(initialization));
    platform::services().mainQueue->asyncAfter(
        initializationTime, [memory = memory_, status = initializationStatus, completion = std::move(completion)] {
            memory->initializationStatus = status;
            completion(status == 0);
        });
}

void FaceTec::setLanguage(std::string_view language) {
    language_ = language;
}

std::shared_ptr<platform::FaceTecCustomization> FaceTec::makeCustomization() {
    return std::make_shared<platform::FaceTecCustomization>();
}

void FaceTec::setCustomization(std::shared_ptr<platform::FaceTecCustomization> customization) {
    customization_ = std::move(customization);
}

void FaceTec::setLowLightCustomization(std::shared_ptr<platform::FaceTecCustomization> customization) {
    lowLightCustomization_ = std::move(customization);
}

void FaceTec::setOverrideResultScreenSuccessMessage(const std::string& message) {
    memory_->successMessage = message;
}

std::string FaceTec::createFaceTecAPIUserAgentString(const std::string& sessionId) {
    return "kivo-simulator (session " + sessionId + ")";
}

std::shared_ptr<platform::ViewController>
FaceTec::createSessionVC(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> faceScanProcessor,
                         const std::string& sessionToken) {
    return createSession(makeScanProcessor(std::move(faceScanProcessor)), faceScan, sessionToken);
}

std::shared_ptr<platform::ViewController>
FaceTec::createSessionVC(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> idScanProcessor,
                         const std::string& sessionToken) {
    return createSession(makeScanProcessor(std::move(idScanProcessor)), idScan, sessionToken);
}

std::shared_ptr<platform::ViewController> FaceTec::createSession(std::unique_ptr<ScanProcessor> processor,
                                                                 const ScanScript& script,
                                                                 const std::string& sessionToken) {
    if (!script.makesScreen) {
        return nullptr;
    }
    auto& sessions = memory_->sessions;
    if (std::ranges::any_of(sessions, [](const auto& each) { return each->isShown && !each->isDone; })) {
        memory_->violations.emplace_back("A session was made while another one was going on");
    }
    auto record = std::make_shared<ScanRecord>(ScanRecord{.kind = processor->kind, .sessionToken = sessionToken});
    sessions.push_back(record);
    return std::make_shared<ScanScreen>(std::move(processor), script, waitsForPerson, customization_, std::move(record),
                                        memory_);
}

} // namespace kivo::simulator
