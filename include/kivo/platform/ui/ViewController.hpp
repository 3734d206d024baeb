#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/View.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {

class Interface;
class NavigationController;
class NavigationItem;
class Storyboard;
class ViewController;
class Window;

/// The way from one screen to another, as the storyboard describes it.
struct Segue {
    /// The segue's name, and the two screens.
    std::string identifier;
    std::shared_ptr<ViewController> source;
    std::shared_ptr<ViewController> destination;
};

/// `automatic` lays a presented screen over the presenting screen, which does not disappear. With `fullScreen` the
/// presenting screen disappears.
enum class ModalPresentationStyle { automatic, fullScreen };

/// A screen: a view, and the functions called while the screen appears and disappears. Main thread only.
///
/// `...WillAppear` and `...WillDisappear` run inside the call that moves the screen; `...DidAppear`, `...DidDisappear`
/// and the call's completion run on the main queue afterwards, in this order, animated or not: the device that
/// draws the tree animates at its own pace. A screen that leaves is released, unless the host holds a reference.
class KIVO_EXPORT ViewController : public std::enable_shared_from_this<ViewController> {
public:
    /// A screen without a storyboard.
    ViewController();
    ViewController(const ViewController&) = delete;
    ViewController& operator=(const ViewController&) = delete;
    virtual ~ViewController();

    /// The screen's view, made on first use; `viewDidLoad` runs then.
    const std::shared_ptr<View>& view();

    /// Whether the view was made already.
    bool isViewLoaded() const { return view_ != nullptr; }

    // The life cycle, for subclasses; empty by default.

    /// The view was made, its outlets are connected.
    virtual void viewDidLoad() {}

    /// The screen is about to be seen.
    virtual void viewWillAppear(bool /*animated*/) {}

    /// The screen is seen.
    virtual void viewDidAppear(bool /*animated*/) {}

    /// The screen is about to be covered or to leave.
    virtual void viewWillDisappear(bool /*animated*/) {}

    /// The screen is covered or has left.
    virtual void viewDidDisappear(bool /*animated*/) {}

    /// The screen is about to leave its stack or its parent, which `parent()` still returns. Called even while other
    /// screens cover this screen.
    virtual void willMoveFromParent() {}

    /// The person has removed this screen from its stack with the navigation bar's "Back".
    virtual void didGoBack() {}

    /// The reading size or the appearance changed while the view was loaded.
    virtual void traitCollectionDidChange() {}

    /// Called between making a segue's destination and showing it.
    virtual void prepareForSegue(const Segue& /*segue*/) {}

    /// Tells the device that draws the tree to update the status bar.
    void setNeedsStatusBarAppearanceUpdate();

    // Where the screen is.

    /// The navigation controller whose stack holds this screen or a parent of it; null without such a controller.
    std::shared_ptr<NavigationController> navigationController();
    /// The screen or stack of which this screen is part; null without one.
    std::shared_ptr<ViewController> parent() const;
    /// The screens that are part of this screen.
    const std::vector<std::shared_ptr<ViewController>>& children() const;

    /// The window that this screen belongs to, even while other screens cover it and its view is in no window. Null
    /// when the screen belongs to no window.
    std::shared_ptr<Window> windowOfScreen() const;

    /// Makes `child` part of this screen. The caller adds the child's view.
    void addChild(const std::shared_ptr<ViewController>& child);
    /// Takes this screen out of its parent. The caller removes the view.
    void removeFromParent();

    /// The title and the buttons for the navigation bar.
    const std::shared_ptr<NavigationItem>& navigationItem();

    // Modal presentation.

    /// Shows `viewController` over this screen, or over the screen that this screen already presents.
    void present(const std::shared_ptr<ViewController>& viewController, bool animated,
                 std::function<void()> completion = {});

    /// Closes the screens that this screen presents or, when it presents none, this screen itself. `completion` runs in
    /// any case, even when no screen was closed.
    void dismiss(bool animated, std::function<void()> completion = {});

    /// Closes only this screen. A screen that this screen presents stays, over the presenting screen. `completion` runs
    /// in any case.
    void dismissAlone(bool animated, std::function<void()> completion = {});

    /// The screen directly over this one, and the screen that this one covers; null without one.
    std::shared_ptr<ViewController> presentedViewController() const;
    std::shared_ptr<ViewController> presentingViewController() const;

    /// How this screen covers another; `automatic` at first.
    ModalPresentationStyle modalPresentationStyle() const { return modalPresentationStyle_; }

    void setModalPresentationStyle(ModalPresentationStyle style) { modalPresentationStyle_ = style; }

    // Storyboard.

    /// The storyboard that made this screen; null for a screen made otherwise.
    const std::shared_ptr<Storyboard>& storyboard() const { return storyboard_; }

    /// Makes the destination of the segue with that name, prepares and shows it. False, with a diagnostic, when this
    /// screen has no such segue or its destination cannot be made.
    bool performSegue(std::string_view identifier);

    /// Overrides the reading size for this screen and its children. An absent category removes the override.
    void overrideContentSizeCategory(std::optional<ContentSizeCategory> category);

protected:
    /// Makes the view; by default the storyboard's view, or else a plain view.
    virtual std::shared_ptr<View> loadView();

    /// Names the outlets and actions that the storyboard must connect; runs when the view is loaded, before
    /// `viewDidLoad`.
    virtual void connect(Interface& /*interface*/) {}

private:
    friend class NavigationController;
    friend class Storyboard;
    friend class View;
    friend class Window;

    enum class Appearance { disappeared, appearing, appeared, disappearing };
    struct State;

    /// The children that show while this screen does.
    virtual std::vector<std::shared_ptr<ViewController>> shownChildren() const;

    /// Puts the children's views in place.
    virtual void arrangeViews() {}

    void leaveParent();
    void tellTraitChange();
    /// Separates this screen, and the screens over it, from their presenting screens.
    void forgetPresentation();

    std::unique_ptr<State> state_;
    std::shared_ptr<View> view_;
    std::shared_ptr<Storyboard> storyboard_;
    ModalPresentationStyle modalPresentationStyle_ = ModalPresentationStyle::automatic;
};

} // namespace kivo::platform
