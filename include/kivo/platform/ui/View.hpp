#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Accessibility.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/Layer.hpp>
#include <kivo/platform/ui/LayoutDirection.hpp>
#include <kivo/platform/ui/Placement.hpp>
#include <kivo/platform/ui/UserInterfaceStyle.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

class ViewController;
class Window;

/// A rectangle of the screen and the views inside it. A view draws nothing: the device that shows the tree draws.
///
/// Made with `std::make_shared` and owned by its superview. Main thread only, like everything of the view model.
class KIVO_EXPORT View : public std::enable_shared_from_this<View> {
public:
    View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    virtual ~View();

    /// The name by which tests, the simulated person and assistive technology find the view: its outlet's name.
    const std::string& identifier() const { return identifier_; }

    void setIdentifier(std::string identifier) { identifier_ = std::move(identifier); }

    /// A number of the host's choice, by which it finds the view; 0 at first.
    int tag() const { return tag_; }

    void setTag(int tag) { tag_ = tag; }

    // The tree.

    /// The views inside this view, the lowest first.
    const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }

    /// The view around this view; null at the root of a tree.
    std::shared_ptr<View> superview() const { return superview_ ? superview_->weak_from_this().lock() : nullptr; }

    /// Puts `view` on top of the other subviews, and removes it from its former superview.
    void addSubview(const std::shared_ptr<View>& view);

    /// Puts `view` below the subviews from `index` on; an index past the end puts it on top.
    void insertSubview(const std::shared_ptr<View>& view, std::size_t index);
    /// Takes this view out of its superview, which may have held the last reference.
    void removeFromSuperview();

    /// The first view with that identifier, depth first, among this view and the views below; null without a match.
    std::shared_ptr<View> find(std::string_view identifier);

    /// The first view with that tag, in the same order; null without a match.
    std::shared_ptr<View> viewWithTag(int tag);

    /// `find` for a view of a known class; null also when the view has another class.
    template <class T>
    std::shared_ptr<T> find(std::string_view identifier) {
        return std::dynamic_pointer_cast<T>(find(identifier));
    }

    /// The window at the root of the tree; null while the view is in no window.
    std::shared_ptr<Window> window();

    /// Whether `view` is this view or a view around it.
    bool isDescendantOf(const View& view) const;

    // Appearance.

    /// Whether the view and all its subviews are out of sight: after `setHidden(true)`, and for a picture that makes
    /// room (`Placement::shareOfDisplay`). False at first.
    bool isHidden() const { return isHidden_ || (pictureHeight_ == 0 && !placeBeside_); }

    void setHidden(bool hidden);

    /// Whether a person sees the view: it is in a window, and neither the view nor a view around it is hidden or
    /// transparent.
    bool isVisible();

    /// Whether a person can operate the view: it is visible, no view around it refuses input, and no other screen
    /// covers its screen.
    bool isReachable();

    /// How opaque the view and all in it are, from 0 to 1; 1 at first.
    double alpha() const { return alpha_; }

    void setAlpha(double alpha);

    /// The colour behind the view; absent for none.
    const std::optional<Color>& backgroundColor() const { return backgroundColor_; }

    void setBackgroundColor(std::optional<Color> color);

    /// The colour of buttons, links and the text cursor. A view without a colour has the colour of its superview.
    std::optional<Color> tintColor() const;
    void setTintColor(std::optional<Color> color);

    /// The outline of the view.
    const Layer& layer() const { return layer_; }

    /// Changes the layer in place: `view.changeLayer([](Layer& layer) { layer.cornerRadius = 4; })`.
    void changeLayer(const std::function<void(Layer&)>& change);

    // Layout.

    /// The view's place in the coordinates of the superview.
    const Rect& frame() const { return frame_; }

    void setFrame(const Rect& frame);

    /// The frame in the coordinates of the root of the tree.
    Rect frameOnScreen() const;

    /// The frame's size at the view's own origin.
    Rect bounds() const { return {.origin = {}, .size = frame_.size}; }

    /// Where the superview places the view.
    const Placement& placement() const { return placement_; }

    void setPlacement(const Placement& placement);

    /// The size that the view needs when its width is limited. A plain view needs the size that its subviews need.
    virtual Size sizeThatFits(double widthLimit);

    /// `sizeThatFits`, except that `placement` decides the dimensions that it gives. Remembered until a change.
    Size fittingSize(double widthLimit);

    /// How far the display's cut-outs and the bars reach into a screen's own view; zero for every other view.
    const EdgeInsets& safeAreaInsets() const { return safeAreaInsets_; }

    /// Marks the view for a new layout. Setters call this function themselves.
    void setNeedsLayout();

    /// Gives every view of the whole tree its frame, if any view is marked for a new layout. Call this function before
    /// reading frames. A screen is laid out before `viewDidAppear`.
    void layoutIfNeeded();

    /// Scrolls the scroll views around this view as little as needed to show this view.
    void scrollIntoView();

    // Input.

    /// Whether a person's touches reach the view and all in it; true at first.
    bool isUserInteractionEnabled() const { return isUserInteractionEnabled_; }

    void setUserInteractionEnabled(bool enabled);

    /// Whether a touch between the subviews goes to the view behind this view; false at first.
    bool passesTouches() const { return passesTouches_; }

    void setPassesTouches(bool passes) { passesTouches_ = passes; }

    /// Calls `action` when the view is tapped, or a view in front that takes no touches itself.
    void addTapAction(std::function<void()> action);

    /// A person's tap on this view. `Window::hitTest` finds the view under a finger: this function does not look for
    /// views of the same screen that cover this view.
    ///
    /// A view that refuses input passes the tap to its superview, and so on up to the first view that takes the tap.
    /// Nothing happens when the view is not visible, when another screen covers its screen, or when a disabled control
    /// comes first. Returns whether a view took the tap.
    bool touch();

    /// Whether the view can take the keyboard's input; false by default.
    virtual bool canBecomeFirstResponder() const { return false; }

    /// Takes the keyboard's input. A view that is not on screen may take the input too, but not from a view that a
    /// person can reach. Returns whether the view has the input now.
    virtual bool becomeFirstResponder();
    /// Gives the keyboard's input back. Returns whether the view is without the input now.
    virtual bool resignFirstResponder();
    /// Whether the view has the keyboard's input.
    bool isFirstResponder() const;

    /// Ends the editing of a view in this view's tree. Returns whether no view of the tree has the keyboard now.
    bool endEditing();

    // Reading size.

    /// The smallest reading size for this view and all in it; absent for no limit.
    const std::optional<ContentSizeCategory>& minimumContentSizeCategory() const { return minimumCategory_; }

    void setMinimumContentSizeCategory(std::optional<ContentSizeCategory> category);

    /// The largest reading size for this view and all in it; absent for no limit.
    const std::optional<ContentSizeCategory>& maximumContentSizeCategory() const { return maximumCategory_; }

    void setMaximumContentSizeCategory(std::optional<ContentSizeCategory> category);

    /// The category of this view: the category of the window or, if set, of the screen, within the limits of the views
    /// around.
    ContentSizeCategory contentSizeCategory() const;

    // Light and dark.

    /// The appearance in which the view is drawn: its own or, without one, that of the views around, of which the
    /// window's is the last.
    UserInterfaceStyle userInterfaceStyle() const;

    /// Gives the view and all in it an appearance of their own; absent for that of the views around.
    void overrideUserInterfaceStyle(std::optional<UserInterfaceStyle> style);

    // Left to right, or right to left.

    /// The direction in which the view places its subviews: its own or, without one, that of the views around, of which
    /// the window's is the last. Left to right outside of a window.
    LayoutDirection layoutDirection() const;

    /// Gives the view and all in it a direction of their own, as digits and codes need; absent for that of the views
    /// around.
    void overrideLayoutDirection(std::optional<LayoutDirection> direction);

    // Assistive technology.

    /// The text for screen readers; by default the text that the view shows.
    std::string accessibilityLabel() const;
    void setAccessibilityLabel(std::string label);

    /// What the view tells assistive technology beside its text and its role, its label included.
    const Accessibility& accessibility() const;

    /// Changes these properties in place: `view.changeAccessibility([](Accessibility& it) { it.isHeading = true; })`.
    void changeAccessibility(const std::function<void(Accessibility&)>& change);

    /// The role that screen readers tell; none for a plain view, which is told as an image if it has a label.
    virtual AccessibilityRole accessibilityRole() const { return AccessibilityRole::none; }

    /// The text that the view shows; empty for views without a text.
    virtual std::string shownText() const { return {}; }

protected:
    /// Places the subviews inside this view's frame; by default each subview by its `placement`.
    virtual void layoutSubviews();

    /// Handles a tap that reached this view. Returns whether the view took the tap.
    virtual bool handleTouch();

    /// Gives `subview` its frame inside `area`, by its placement.
    void place(View& subview, const Rect& area) const;

    /// Gives `subview` its frame inside this view, except the parts under cut-outs and bars.
    void placeInScreen(View& subview) const;

    /// Called when the reading size may have changed, before the layout.
    virtual void contentSizeCategoryDidChange() {}

    /// Tells the window's observer that this view looks different now.
    void noteChange();

private:
    friend class NavigationController;
    friend class ScrollView;
    friend class StackView;
    friend class ViewController;
    friend class Window;

    struct Fit {
        double widthLimit = 0;
        Size size{};
    };

    virtual Window* asWindow() { return nullptr; }

    /// The direction at the root of a tree.
    virtual LayoutDirection directionOfLanguage() const { return LayoutDirection::leftToRight; }

    /// The window at the root of the tree; null where the root is no window, or is being destroyed.
    Window* rootWindow();

    /// Whether the view takes part in input; a disabled control does not.
    virtual bool isOperable() const { return isUserInteractionEnabled_; }

    void setSafeAreaInsets(const EdgeInsets& insets);
    void setContentSizeOverride(std::optional<ContentSizeCategory> category);
    void tellContentSizeCategoryChange();
    void noteChangeOfTree();
    void setNeedsLayoutOfTree();
    double heightLimit() const;
    void layoutTree();
    void tellWindowAboutScreens();

    std::string identifier_;
    int tag_ = 0;
    /// The view whose subview this is; that view resets the pointer when it goes.
    View* superview_ = nullptr;
    std::vector<std::shared_ptr<View>> subviews_;
    bool isHidden_ = false;
    double alpha_ = 1;
    std::optional<Color> backgroundColor_;
    std::optional<Color> tintColor_;
    Layer layer_;
    Rect frame_;
    Placement placement_;
    /// The height that a scroll view leaves to a picture; absent for no limit.
    std::optional<double> pictureHeight_;
    /// The place of a picture beside the column that holds the picture, in the coordinates of that column.
    std::optional<Rect> placeBeside_;
    EdgeInsets safeAreaInsets_;
    bool needsLayout_ = true;
    bool layoutIsPending_ = true;
    std::vector<Fit> fits_;
    bool isUserInteractionEnabled_ = true;
    bool passesTouches_ = false;
    std::vector<std::function<void()>> tapActions_;
    std::optional<ContentSizeCategory> minimumCategory_;
    std::optional<ContentSizeCategory> maximumCategory_;
    std::optional<ContentSizeCategory> contentSizeOverride_;
    std::optional<UserInterfaceStyle> styleOverride_;
    std::optional<LayoutDirection> directionOverride_;
    /// Null for the properties that every view has at first.
    std::unique_ptr<Accessibility> accessibility_;
    /// The screen whose own view this is.
    std::weak_ptr<ViewController> screen_;
};

} // namespace kivo::platform
