#pragma once

#include <kivo/ActivationResponse.hpp>
#include <kivo/Export.hpp>
#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>

namespace kivo {

/// Learns that the final status screen has disappeared. Called on the main thread.
class KIVO_EXPORT FinalStatusVCDelegate {
public:
    virtual ~FinalStatusVCDelegate() = default;

    /// The screen begins to disappear. The screen holds the returned object until `finalStatusDidDisappear` has
    /// returned, so a delegate that must live until then returns itself. Null by default.
    virtual std::shared_ptr<void> finalStatusWillDisappear() { return nullptr; }

    /// Called 0.1 seconds after the screen begins to disappear, whether the person or the host closed the screen.
    virtual void finalStatusDidDisappear() = 0;
};

/// The last screen: the session is complete, and the person can close the application.
///
/// The SDK never presents the screen: a host makes it from a storyboard, where its class is "FinalStatusVC", sets the
/// properties and presents it. The texts are the storyboard's. The button `backToHomeButton` dismisses the screen by
/// the action `newDocSigningTap`. Main thread only.
class KIVO_EXPORT FinalStatusVC final : public platform::ViewController {
public:
    FinalStatusVC();
    ~FinalStatusVC() override;

    // Set before the screen is presented.

    /// Held weakly; absent at first.
    std::weak_ptr<FinalStatusVCDelegate> delegate;
    /// Gives the title its font and limits the reading size; null at first, which leaves the SDK's own font and no
    /// limits.
    std::shared_ptr<ThemeCustomization> themeObj;
    /// The session that ends, kept for the host: the screen does not read the session. Null at first.
    std::shared_ptr<const ActivationResponse> sessionObject;

    /// The screen tells its delegate and dresses itself here; an override calls this class's function.
    void viewWillAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void traitCollectionDidChange() override;

protected:
    void connect(platform::Interface& interface) override;

private:
    struct Outlets;

    void applyFonts();

    std::unique_ptr<Outlets> outlets_;
};

} // namespace kivo
