#pragma once

#include "platform/c/Arguments.hpp"

#include <kivo/c/screens.h>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/ViewController.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo::c {

/// Tells the host, on the main queue, that a window looks different; one notice for all changes until the notice.
class ChangeNotices final : public platform::WindowObserver, public std::enable_shared_from_this<ChangeNotices> {
public:
    /// `changed` may be null.
    ChangeNotices(kivo_work changed, UserData user)
        : changed_{changed}
        , user_{std::move(user)} {}

    void viewDidChange(platform::View& view) override;
    void screenDidChange() override;

private:
    void noteChange();

    kivo_work changed_;
    UserData user_;
    bool isDue_ = false;
};

/// The display behind a pointer of the host. Refuses a pointer that is no open display, and never reads through the
/// pointer.
kivo_display& displayOf(kivo_display* handle);

/// What a person sees in the window, as JSON; `kivo_display_snapshot` names the members.
std::string snapshotOf(platform::Window& window);

} // namespace kivo::c

struct kivo_display {
    std::shared_ptr<kivo::platform::Window> window;
    std::shared_ptr<kivo::platform::NavigationController> navigation;
    /// The empty screen at the bottom of the stack.
    std::shared_ptr<kivo::platform::ViewController> start;
    std::shared_ptr<kivo::c::ChangeNotices> notices;
};
