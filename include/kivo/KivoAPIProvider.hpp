#pragma once

#include <kivo/Export.hpp>
#include <kivo/KivoAPI.hpp>
#include <kivo/ObjCResult.hpp>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kivo {

/// Receives the outcome of a provider's request, or each outcome of a screen.
using ObjCCompletion = std::function<void(std::shared_ptr<ObjCResult>)>;

/// The operations of a session API with outcomes as plain objects. Made by `KivoSDK::loadForProvider`.
///
/// Threads and rules are those of `KivoAPI`; only the form of the outcome differs.
class KIVO_EXPORT KivoAPIProvider {
public:
    /// Offers a session API, which must not be null.
    explicit KivoAPIProvider(std::shared_ptr<KivoAPI> provider);

    /// The session API behind this provider, shared by every provider of its version.
    const std::shared_ptr<KivoAPI>& provider() const { return provider_; }

    /// The session API's theme object when the provider was made. Replacing the object here does not change the
    /// session.
    const std::shared_ptr<ThemeCustomization>& sdkTheme() const { return sdkTheme_; }

    void setSdkTheme(std::shared_ptr<ThemeCustomization> theme) { sdkTheme_ = std::move(theme); }

    /// The operation of the same name of `KivoAPI`.
    void setTheme(std::shared_ptr<ThemeCustomization> theme);
    void setContext(std::shared_ptr<platform::ViewController> viewController);
    void acquire(AcquisitionObject object, std::shared_ptr<AcquisitionConfig> config, ObjCCompletion response);
    void join(std::string forCode, std::shared_ptr<AcquisitionConfig> config, ObjCCompletion response);
    void update(std::string action, std::string message, ObjCCompletion response);
    void status(ObjCCompletion response);
    void commit(ObjCCompletion response);
    void resumeInBrowser();
    void upload(AcquisitionObject acquisitionObject, std::string data, ObjCCompletion response);
    void reset();

private:
    std::shared_ptr<KivoAPI> provider_;
    std::shared_ptr<ThemeCustomization> sdkTheme_;
};

} // namespace kivo
