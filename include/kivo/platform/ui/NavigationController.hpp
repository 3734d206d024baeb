#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <vector>

namespace kivo::platform {

/// A stack of screens under a navigation bar; the topmost is shown.
///
/// A view that the host adds to the controller's own view or to its bar stays there, above the screens, until the host
/// removes the view.
class KIVO_EXPORT NavigationController final : public ViewController {
public:
    /// An empty stack shows nothing until a screen is pushed.
    explicit NavigationController(const std::shared_ptr<ViewController>& root = nullptr);

    /// The screens of the stack, the lowest first.
    const std::vector<std::shared_ptr<ViewController>>& viewControllers() const { return children(); }

    /// The topmost screen; null for an empty stack.
    std::shared_ptr<ViewController> topViewController() const;

    /// Puts a screen on top of the stack.
    void pushViewController(const std::shared_ptr<ViewController>& viewController, bool animated);

    /// Removes the topmost screen and returns it; null when only the root is left.
    std::shared_ptr<ViewController> popViewController(bool animated);

    /// Removes every screen above `viewController`.
    void popToViewController(const std::shared_ptr<ViewController>& viewController, bool animated);

    /// The bar at the top. Its tint colours the buttons; its items are the top screen's `navigationItem`.
    const std::shared_ptr<View>& navigationBar();

    /// The bar's background and the colour of its title. The title is black at first, on a light bar, and white on a
    /// dark bar in the dark appearance.
    void setNavigationBarColors(Color background, Color title);

    /// Whether the bar with title and buttons is hidden; false at first.
    bool isNavigationBarHidden() const { return isNavigationBarHidden_; }

    void setNavigationBarHidden(bool hidden);

protected:
    std::shared_ptr<View> loadView() override;

private:
    std::vector<std::shared_ptr<ViewController>> shownChildren() const override;
    void arrangeViews() override;
    void goBack();
    void showTop(bool animated);
    void fillNavigationBar();

    std::shared_ptr<View> navigationBar_;
    std::vector<std::shared_ptr<View>> barItems_;
    Color titleColor_ = Color::adaptive(Color::black(), Color::white());
    bool isNavigationBarHidden_ = false;
};

} // namespace kivo::platform
