#pragma once

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/Export.hpp>
#include <kivo/KivoAPIProvider.hpp>

#include <memory>
#include <mutex>
#include <string_view>

namespace kivo {

/// Loads a provider and keeps the provider. The accessors may be called from any thread.
class KIVO_EXPORT ZorFrameworkWrapper {
public:
    /// Loads a provider, which replaces the former provider; a rejected version replaces the former provider by null.
    std::shared_ptr<KivoAPIProvider> load(std::string_view key, std::string_view version);

    /// The provider that was loaded or set last; null before, and after a rejected version.
    std::shared_ptr<KivoAPIProvider> apiProvider() const;
    void setApiProvider(std::shared_ptr<KivoAPIProvider> apiProvider);

    /// Storage for the host's configuration, which the wrapper never reads.
    std::shared_ptr<AcquisitionConfig> config() const;
    void setConfig(std::shared_ptr<AcquisitionConfig> config);

private:
    mutable std::mutex mutex_;
    std::shared_ptr<KivoAPIProvider> apiProvider_;
    std::shared_ptr<AcquisitionConfig> config_;
};

} // namespace kivo
