#include <kivo/KivoSDK.hpp>
#include <kivo/ZorFrameworkWrapper.hpp>

#include <utility>

namespace kivo {

std::shared_ptr<KivoAPIProvider> ZorFrameworkWrapper::load(std::string_view key, std::string_view version) {
    auto loaded = KivoSDK::loadForProvider(key, version);
    setApiProvider(loaded);
    return loaded;
}

std::shared_ptr<KivoAPIProvider> ZorFrameworkWrapper::apiProvider() const {
    const std::scoped_lock lock{mutex_};
    return apiProvider_;
}

void ZorFrameworkWrapper::setApiProvider(std::shared_ptr<KivoAPIProvider> apiProvider) {
    const std::scoped_lock lock{mutex_};
    std::swap(apiProvider_, apiProvider);
}

std::shared_ptr<AcquisitionConfig> ZorFrameworkWrapper::config() const {
    const std::scoped_lock lock{mutex_};
    return config_;
}

void ZorFrameworkWrapper::setConfig(std::shared_ptr<AcquisitionConfig> config) {
    const std::scoped_lock lock{mutex_};
    std::swap(config_, config);
}

} // namespace kivo
