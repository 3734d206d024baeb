#pragma once

#include <kivo/platform/ui/View.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace kivo::platform {

/// Follows the contents of a window in order to draw them. Main thread.
class KIVO_EXPORT WindowObserver {
public:
    virtual ~WindowObserver() = default;

    /// `view` looks different: its own properties, its frame, or its list of subviews.
    virtual void viewDidChange(View& /*view*/) {}

    /// Another screen is on top now.
    virtual void screenDidChange() {}

    /// The screen asks for another look of the status bar.
    virtual void statusBarAppearanceDidChange() {}
};

/// The whole display of a phone: its size, its reading size, its appearance, and the screens on it.
///
/// A view that the host adds stays above every screen until the host removes the view.
class KIVO_EXPORT Window final : public View {
public:
    /// A window of that size in points.
    explicit Window(Size size = {390, 844});

    /// The lowest screen; null before one was set.
    std::shared_ptr<ViewController> rootViewController() const { return root_; }

    /// Shows `root`: its view is loaded and appears.
    void setRootViewController(std::shared_ptr<ViewController> root);

    /// The screen that a person sees: the last presented one or, of a navigation stack, the topmost.
    std::shared_ptr<ViewController> visibleViewController() const;

    /// Changes the size of the display, in points, and lays out anew.
    void setSize(Size size);

    /// How far cut-outs and the device's own bars reach into the display; 0 at first.
    const EdgeInsets& safeArea() const { return safeArea_; }

    void setSafeArea(const EdgeInsets& insets);

    /// The reading size that the person has set on the device.
    ContentSizeCategory preferredContentSizeCategory() const { return contentSizeCategory(); }

    /// Tells every loaded screen that its traits changed, then lays out anew.
    void setPreferredContentSizeCategory(ContentSizeCategory category);

    /// Sets the appearance that the person has chosen; light at first. Tells every loaded screen that its traits
    /// changed. Named colours and images with a dark variant change with it, on screens that are shown already.
    void setUserInterfaceStyle(UserInterfaceStyle style);

    /// Sets the direction of the person's language. At first it is that of the main bundle's texts
    /// (`Bundle::language`) or, where that bundle has no language of its own, of the SDK's. The screens are laid out
    /// anew.
    void setLayoutDirection(LayoutDirection direction);

    /// The topmost view at a point of the display that takes touches; null when there is none. A control takes those
    /// beside it as well where it is less than 44 points wide or high and no other control is there.
    std::shared_ptr<View> hitTest(Point point);

    /// The topmost screen's own view and the host's views over it, from the lowest up. No touch reaches what lies
    /// below.
    std::vector<std::shared_ptr<View>> reachableViews() const;

    /// Sets who draws the window; held weakly.
    void setObserver(std::weak_ptr<WindowObserver> observer) { observer_ = std::move(observer); }

protected:
    void layoutSubviews() override;

private:
    friend class NavigationController;
    friend class View;
    friend class ViewController;

    using Screens = std::vector<std::shared_ptr<ViewController>>;

    Window* asWindow() override { return this; }

    LayoutDirection directionOfLanguage() const override;

    /// The views of `reachableViews`.
    std::span<const std::shared_ptr<View>> subviewsInReach() const;

    /// Brings the screens' life cycles and views in line with the present hierarchy of screens.
    void updateScreens(bool animated, std::function<void()> completion = {});
    /// The presented screens, from the topmost screen that fills the display upwards.
    Screens stackedScreens() const;
    /// The stacked screens and their children.
    Screens screensToShow() const;
    void arrangeViews();
    void arrangeViewsOnce();
    void tellTraitChange();

    std::shared_ptr<ViewController> root_;
    Screens shown_;
    /// The screens' own views in the window, from the lowest up; they have the lowest places.
    std::vector<std::shared_ptr<View>> screenViews_;
    bool isArranging_ = false;
    bool isArrangementDue_ = false;
    /// The direction of the language, until the next layout.
    mutable std::optional<LayoutDirection> languageDirection_;
    EdgeInsets safeArea_{.top = 47, .left = 0, .bottom = 34, .right = 0};
    std::weak_ptr<WindowObserver> observer_;
};

} // namespace kivo::platform
