#include "c/Display.hpp"

#include "c/Requests.hpp"
#include "c/Sessions.hpp"
#include "platform/base/Process.hpp"

#include <kivo/AcquisitionObject.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/UserInterfaceStyle.hpp>

#include <cmath>
#include <set>
#include <utility>

namespace kivo::c {
namespace {

using platform::ViewController;
using platform::Window;

/// The handles that hosts hold. Main thread.
std::set<kivo_display*>& displays() {
    return platform::Process::current().part<std::set<kivo_display*>>([] { return new std::set<kivo_display*>; });
}

double length(double value, double least, const char* what) {
    constexpr double most = 100000;
    const bool isLength = value >= least && value <= most; // false for NaN
    if (!isLength) {
        throw Misuse{std::string{what} + " is no length in points"};
    }
    return value;
}

platform::Size sizeOf(double width, double height) {
    return {.width = length(width, 1, "width"), .height = length(height, 1, "height")};
}

} // namespace

void ChangeNotices::viewDidChange(platform::View& /*view*/) {
    noteChange();
}

void ChangeNotices::screenDidChange() {
    noteChange();
}

void ChangeNotices::noteChange() {
    if (changed_ == nullptr || std::exchange(isDue_, true)) {
        return;
    }
    platform::services().mainQueue->async([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->isDue_ = false;
            self->changed_(self->user_.pointer());
        }
    });
}

kivo_display& displayOf(kivo_display* handle) {
    if (!displays().contains(notNull(handle, "display"))) {
        throw Misuse{"display is not a handle of kivo_display_new"};
    }
    return *handle;
}

} // namespace kivo::c

using namespace kivo;

extern "C" {

kivo_display* kivo_display_new(double width, double height) {
    return c::resultOf(__func__, static_cast<kivo_display*>(nullptr), [&] {
        const auto start = std::make_shared<c::ViewController>();
        auto made = std::make_unique<kivo_display>(
            kivo_display{.window = std::make_shared<c::Window>(c::sizeOf(width, height)),
                         .navigation = std::make_shared<platform::NavigationController>(start),
                         .start = start,
                         .notices = nullptr});
        made->window->setSafeArea({});
        made->window->setRootViewController(made->navigation);
        c::displays().insert(made.get());
        return made.release();
    });
}

void kivo_display_free(kivo_display* display) {
    c::statusOf(__func__, [&] {
        if (display != nullptr) {
            const std::unique_ptr<kivo_display> owned{&c::displayOf(display)};
            c::displays().erase(display);
        }
    });
}

kivo_status kivo_display_set_size(kivo_display* display, double width, double height) {
    return c::statusOf(__func__, [&] { c::displayOf(display).window->setSize(c::sizeOf(width, height)); });
}

kivo_status kivo_display_set_margins(kivo_display* display, double top, double left, double bottom, double right) {
    return c::statusOf(__func__, [&] {
        c::displayOf(display).window->setSafeArea({.top = c::length(top, 0, "top"),
                                                   .left = c::length(left, 0, "left"),
                                                   .bottom = c::length(bottom, 0, "bottom"),
                                                   .right = c::length(right, 0, "right")});
    });
}

kivo_status kivo_display_set_reading_size(kivo_display* display, int32_t size) {
    return c::statusOf(__func__, [&] {
        c::displayOf(display).window->setPreferredContentSizeCategory(
            c::enumeratorOf<platform::ContentSizeCategory>(size, "size"));
    });
}

kivo_status kivo_display_set_appearance(kivo_display* display, int32_t appearance) {
    return c::statusOf(__func__, [&] {
        c::displayOf(display).window->setUserInterfaceStyle(
            c::enumeratorOf<platform::UserInterfaceStyle>(appearance, "appearance"));
    });
}

kivo_status kivo_session_set_display(kivo_session* session, kivo_display* display) {
    return c::statusOf(__func__, [&] {
        c::sessionOf(session)->setContext(display != nullptr ? c::displayOf(display).start : nullptr);
        c::setHasDisplay(session, display != nullptr);
    });
}

kivo_status kivo_session_acquire(kivo_session* session, kivo_object object, kivo_answer answer) {
    c::UserData user{answer.user, answer.release};
    return c::statusOf(__func__, [&] {
        const auto& api = c::sessionOf(session);
        const auto wanted = c::enumeratorOf<AcquisitionObject>(object, "object");
        c::requireScreen(session, wanted);
        api->acquire(wanted, nullptr, c::screenCompletion(api, answer, std::move(user)));
    });
}

kivo_status kivo_display_clear(kivo_display* display) {
    return c::statusOf(__func__, [&] {
        const auto& shown = c::displayOf(display);
        if (shown.navigation->presentedViewController()) {
            shown.navigation->dismiss(false);
        }
        shown.navigation->popToViewController(shown.start, false);
    });
}

kivo_string* kivo_display_snapshot(kivo_display* display) {
    return c::resultOf(__func__, static_cast<kivo_string*>(nullptr),
                       [&] { return c::handOver(c::snapshotOf(*c::displayOf(display).window)); });
}

kivo_status kivo_display_on_change(kivo_display* display, kivo_work changed, void* user, kivo_release release) {
    c::UserData data{user, release};
    return c::statusOf(__func__, [&] {
        auto& shown = c::displayOf(display);
        auto notices = std::make_shared<c::ChangeNotices>(changed, std::move(data));
        shown.window->setObserver(notices);
        std::swap(shown.notices, notices);
    });
}
}
