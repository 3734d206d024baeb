#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/Layer.hpp>
#include <kivo/platform/ui/Placement.hpp>

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

/// What a view is to a person who cannot see it.
enum class AccessibilityRole { none, text, button, textField, image, progress, alert };

/// A rectangle of the screen and the views inside it. It draws nothing: whoever shows the tree does.
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

    int tag() const { return tag_; }

    void setTag(int tag) { tag_ = tag; }

    // The tree.

    const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }

    std::shared_ptr<View> superview() const { return superview_.lock(); }

    /// Puts `view` on top of the other subviews, taking it from where it was.
    void addSubview(const std::shared_ptr<View>& view);

    /// The same below the subviews from `index` on; an index past the end puts it on top.
    void insertSubview(const std::shared_ptr<View>& view, std::size_t index);
    void removeFromSuperview();

    /// This view or the first one below it, depth first, with that identifier; null when there is none.
    std::shared_ptr<View> find(std::string_view identifier);

    /// The same for a tag.
    std::shared_ptr<View> viewWithTag(int tag);

    /// `find` for a view of a known class; null also when the view is of another one.
    template <class T>
    std::shared_ptr<T> find(std::string_view identifier) {
        return std::dynamic_pointer_cast<T>(find(identifier));
    }

    /// The window at the root of the tree; null while the view is in none.
    std::shared_ptr<Window> window();

    bool isDescendantOf(const View& view) const;

    // Appearance.

    bool isHidden() const { return isHidden_; }

    void setHidden(bool hidden);

    /// Whether a person sees the view: neither it nor a view around it is hidden or transparent, and it is in a window.
    bool isVisible();

    /// Whether a person can operate the view: it is visible, no view around it refuses input, and no screen covers its
    /// own.
    bool isReachable();

    double alpha() const { return alpha_; }

    void setAlpha(double alpha);

    const std::optional<Color>& backgroundColor() const { return backgroundColor_; }

    void setBackgroundColor(std::optional<Color> color);

    /// The colour of what can be tapped, and of the text cursor; inherited where absent.
    std::optional<Color> tintColor() const;
    void setTintColor(std::optional<Color> color);

    const Layer& layer() const { return layer_; }

    /// Changes the layer in place: `view.changeLayer([](Layer& layer) { layer.cornerRadius = 4; })`.
    void changeLayer(const std::function<void(Layer&)>& change);

    // Layout.

    /// In the coordinates of the superview.
    const Rect& frame() const { return frame_; }

    void setFrame(const Rect& frame);

    /// The frame in the coordinates of the root of the tree.
    Rect frameOnScreen() const;

    /// The frame's size at the view's own origin.
    Rect bounds() const { return {.origin = {}, .size = frame_.size}; }

    const Placement& placement() const { return placement_; }

    void setPlacement(const Placement& placement);

    /// What the view needs when it may be no wider than `widthLimit`; a plain view needs what its subviews need.
    virtual Size sizeThatFits(double widthLimit);

    /// `sizeThatFits`, with `placement` deciding the dimensions that it gives; remembered until something changes.
    Size fittingSize(double widthLimit);

    /// How far the display's cut-outs and the bars reach into a screen's own view; zero for every other view.
    const EdgeInsets& safeAreaInsets() const { return safeAreaInsets_; }

    /// Says that the view needs another size or that its subviews need other places. Setters do this themselves.
    void setNeedsLayout();

    /// Gives every view of the whole tree its frame, if anything asked for it. Whoever looks at frames calls this
    /// first; a screen is laid out before `viewDidAppear`.
    void layoutIfNeeded();

    // Input.

    bool isUserInteractionEnabled() const { return isUserInteractionEnabled_; }

    void setUserInteractionEnabled(bool enabled);

    /// Whether a touch between the subviews goes to what lies behind this view; false at first.
    bool passesTouches() const { return passesTouches_; }

    void setPassesTouches(bool passes) { passesTouches_ = passes; }

    /// Calls `action` when the view, or one above it that takes no touches itself, is tapped.
    void addTapAction(std::function<void()> action);

    /// A person's tap that has met this view, wherever in it. Which view a finger meets is the question of
    /// `Window::hitTest`: this function does not look for views of the same screen that cover this one.
    ///
    /// A view that refuses input passes the tap on to the view around it, and from there the tap goes up to the first
    /// view that wants it. Nothing happens where the view is not visible, where another screen covers this one, or
    /// where a disabled control comes first. Returns whether a view took the tap.
    bool touch();

    virtual bool canBecomeFirstResponder() const { return false; }

    /// Takes the keyboard's input. A view that is not on screen may take the input too, but not from a view that a
    /// person can reach. Returns whether the view has the input now.
    virtual bool becomeFirstResponder();
    virtual bool resignFirstResponder();
    bool isFirstResponder() const;

    /// Makes whichever view below this one has the keyboard give it up. Returns whether none has it now.
    bool endEditing();

    // Reading size.

    const std::optional<ContentSizeCategory>& minimumContentSizeCategory() const { return minimumCategory_; }

    void setMinimumContentSizeCategory(std::optional<ContentSizeCategory> category);

    const std::optional<ContentSizeCategory>& maximumContentSizeCategory() const { return maximumCategory_; }

    void setMaximumContentSizeCategory(std::optional<ContentSizeCategory> category);

    /// The category that holds here: the window's, overridden by a screen's, within the limits of the views around.
    ContentSizeCategory contentSizeCategory() const;

    // Assistive technology.

    /// What a screen reader says; by default the view's text.
    std::string accessibilityLabel() const;
    void setAccessibilityLabel(std::string label);

    virtual AccessibilityRole accessibilityRole() const { return AccessibilityRole::none; }

    /// The text that the view shows; empty for views without one.
    virtual std::string shownText() const { return {}; }

protected:
    /// Places the subviews inside this view's frame. By default each after its `placement`.
    virtual void layoutSubviews();

    /// What happens on a tap that reached this view. Returns whether it wanted the tap.
    virtual bool handleTouch();

    /// Gives `subview` its frame inside `area` after its placement.
    static void place(View& subview, const Rect& area);

    /// The same inside this view, as far as no cut-out and no bar reaches.
    void placeInScreen(View& subview) const;

    /// Called when the reading size may have changed, before the layout.
    virtual void contentSizeCategoryDidChange() {}

    /// Tells the window's observer that this view looks different now.
    void noteChange();

private:
    friend class NavigationController;
    friend class ViewController;
    friend class Window;

    struct Fit {
        double widthLimit = 0;
        Size size{};
    };

    virtual Window* asWindow() { return nullptr; }

    /// Whether the view takes part in input at all; a control that is disabled does not.
    virtual bool isOperable() const { return isUserInteractionEnabled_; }

    void setSafeAreaInsets(const EdgeInsets& insets);
    void setContentSizeOverride(std::optional<ContentSizeCategory> category);
    void tellContentSizeCategoryChange();
    void layoutTree();
    void tellWindowAboutScreens();

    std::string identifier_;
    int tag_ = 0;
    std::weak_ptr<View> superview_;
    std::vector<std::shared_ptr<View>> subviews_;
    bool isHidden_ = false;
    double alpha_ = 1;
    std::optional<Color> backgroundColor_;
    std::optional<Color> tintColor_;
    Layer layer_;
    Rect frame_;
    Placement placement_;
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
    std::string accessibilityLabel_;
    /// The screen whose own view this is.
    std::weak_ptr<ViewController> screen_;
};

} // namespace kivo::platform
