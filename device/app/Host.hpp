#pragma once

#include <kivo/kivo.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <memory>
#include <string>

namespace kivo::device::app {

class HomeScreen;

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

private:
    void acquire(AcquisitionObject object);
    void codeEntered(const IdvOutcome& outcome);
    void tell(const std::string& title, const std::string& message) const;
    void showClosingScreen();
    /// A completion that continues on the main thread, unless the host is gone by then.
    IdvCompletion onMain(std::function<void(Host&, const IdvOutcome&)> then);
    IdvCompletion report(const std::string& what);

    std::shared_ptr<platform::Window> window_;
    std::shared_ptr<KivoAPI> session_;
    std::shared_ptr<AcquisitionConfig> config_;
    std::shared_ptr<HomeScreen> home_;
    std::shared_ptr<platform::NavigationController> navigation_;
};

} // namespace kivo::device::app
