#include "Configuration/logging/Log.hpp"

#include <kivo/KivoAPIProvider.hpp>

#include <utility>

namespace kivo {
namespace {

std::shared_ptr<ObjCResult> converted(const IdvOutcome& outcome) {
    if (outcome) {
        return std::make_shared<ObjCResult>(*outcome);
    }
    const auto failure = outcome.error();
    return std::make_shared<ObjCResult>(std::make_shared<ObjCError>(std::string{name(failure)},
                                                                    std::string{message(failure)}, code(failure),
                                                                    std::string{genericMessage(failure)}));
}

IdvCompletion converting(ObjCCompletion response) {
    return [response = std::move(response)](const IdvOutcome& outcome) {
        if (response) {
            response(converted(outcome));
        }
    };
}

std::string joinFailureLine(ResponseCode failure) {
    const std::string caseName{name(failure)};
    return "Join failure: " + caseName + ", " + std::to_string(code(failure)) + ", " + std::string{message(failure)} +
           ", " + caseName;
}

} // namespace

KivoAPIProvider::KivoAPIProvider(std::shared_ptr<KivoAPI> provider)
    : provider_{std::move(provider)}
    , sdkTheme_{provider_->sdkTheme()} {}

void KivoAPIProvider::setTheme(std::shared_ptr<ThemeCustomization> theme) {
    provider_->setTheme(std::move(theme));
}

void KivoAPIProvider::setContext(std::shared_ptr<platform::ViewController> viewController) {
    provider_->setContext(std::move(viewController));
}

void KivoAPIProvider::acquire(AcquisitionObject object, std::shared_ptr<AcquisitionConfig> config,
                              ObjCCompletion response) {
    provider_->acquire(object, std::move(config), converting(std::move(response)));
}

void KivoAPIProvider::join(std::string forCode, std::shared_ptr<AcquisitionConfig> config, ObjCCompletion response) {
    provider_->join(
        std::move(forCode), std::move(config), [response = converting(std::move(response))](const IdvOutcome& outcome) {
            if (!outcome) {
                log::debug("join(forCode:config:response:)", [&] { return joinFailureLine(outcome.error()); });
            }
            response(outcome);
        });
}

void KivoAPIProvider::update(std::string action, std::string message, ObjCCompletion response) {
    provider_->update(std::move(action), std::move(message), converting(std::move(response)));
}

void KivoAPIProvider::status(ObjCCompletion response) {
    provider_->status(converting(std::move(response)));
}

void KivoAPIProvider::commit(ObjCCompletion response) {
    provider_->commit(converting(std::move(response)));
}

void KivoAPIProvider::resumeInBrowser() {
    provider_->resumeInBrowser();
}

void KivoAPIProvider::upload(AcquisitionObject acquisitionObject, std::string data, ObjCCompletion response) {
    provider_->upload(acquisitionObject, std::move(data), converting(std::move(response)));
}

void KivoAPIProvider::reset() {
    provider_->reset();
}

} // namespace kivo
