#pragma once

#include "VendorPage.hpp"

#include <kivo/platform/ui/ViewController.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <functional>
#include <memory>

namespace kivo::simulator {

/// The simulated document reader's screen: a line about the reading, and perhaps a button for each ending of the
/// reading. Its texts are in the host's words where the host's table has them.
class ReadingScreen final : public platform::ViewController {
public:
    /// `resources` may be null.
    explicit ReadingScreen(std::shared_ptr<platform::readid::UIResources> resources);

    /// Shows a line without buttons.
    void tell(VendorText line);

    /// Shows a button for each ending that a person can choose, and hands the first ending chosen to `chosen`.
    void ask(std::function<void(const Reading&)> chosen);

    /// Called once when the screen has been taken away, by the reader or by the host.
    std::function<void()> gone;

    void viewDidDisappear(bool animated) override;

private:
    VendorPage page(VendorText line) const;

    const std::shared_ptr<platform::readid::UIResources> resources_;
};

} // namespace kivo::simulator
