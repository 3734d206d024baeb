#pragma once

#include <kivo/kivo.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <functional>
#include <memory>
#include <set>
#include <string>

namespace kivo::device::app {

class HomeScreen;

/// The colours of the host's own screen and of its navigation bar.
struct HostColors {
    platform::Color background;
    platform::Color text;
    platform::Color button;
    platform::Color bar;
    /// For titles of buttons and for the bar's buttons.
    platform::Color tint;
};

/// A host application as an integrator would write it: a start screen with a button for each call of a session.
/// Main thread.
class Host : public std::enable_shared_from_this<Host> {
public:
    /// `version` is the interface version to load.
    Host(std::shared_ptr<platform::Window> window, const std::string& version);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Shows the start screen.
    void start();

    /// Sets the theme of the screens that come later.
    void setTheme(const std::shared_ptr<ThemeCustomization>& theme) const { session_->setTheme(theme); }

    void setColors(const HostColors& colors);

    /// Takes all other screens away from the start screen.
    void returnToStart();

private:
    class Progress;
    using Step = std::function<void(Host&, const IdvOutcome&)>;

    void acquire(AcquisitionObject object, const std::string& success);
    void enterCode();
    void join(const std::string& code);
    /// The completion of a request. Shows `progress` over the screen on top until the answer, and tells a success in
    /// the words `success`.
    IdvCompletion request(const std::string& progress, const std::string& success);
    /// Returns to the start screen and says `text` there.
    void succeed(const std::string& text);
    /// Shows a failure over the screen on top. A person who goes back or cancels has not failed.
    void tellFailure(const std::string& title, ResponseCode failure) const;
    void tell(const std::string& title, const std::string& message) const;
    void showClosingScreen();
    /// A completion that continues on the main thread, unless the host is gone by then.
    IdvCompletion onMain(Step then);

    std::shared_ptr<platform::Window> window_;
    std::shared_ptr<KivoAPI> session_;
    std::shared_ptr<AcquisitionConfig> config_;
    std::shared_ptr<HomeScreen> home_;
    std::shared_ptr<platform::NavigationController> navigation_;
    /// A veil for each request under way.
    std::set<std::shared_ptr<const Progress>> progress_;
};

} // namespace kivo::device::app
