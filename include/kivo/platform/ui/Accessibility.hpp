#pragma once

#include <kivo/Export.hpp>

#include <memory>
#include <string>
#include <vector>

namespace kivo::platform {

class View;
class ViewController;
class Window;

/// The role of a view for a person who cannot see it. A `heading` names a part of the screen; a `status` is told when
/// it appears or changes, wherever the person is.
enum class AccessibilityRole { none, text, button, textField, image, progress, alert, heading, status };

/// What a view tells assistive technology beside its text and the role of its class; all false or empty at first.
struct Accessibility {
    /// The name; empty for the text that the view shows.
    std::string label{};
    /// A sentence that follows the name, the role and the value, such as the reason why a value was refused.
    std::string hint{};
    /// Whether the view and all in it are left out: neither told nor in the order of focus. A touch still arrives.
    bool isHidden = false;
    /// Whether a label's text is a heading.
    bool isHeading = false;
    /// Whether a field's value was refused.
    bool isInvalid = false;
    /// Whether a person cannot go on without a value in the field.
    bool isRequired = false;
    /// Whether a label's text is a status, and no heading.
    bool isLive = false;
    /// Whether the view covers its siblings, which are left out as long as the view is not hidden.
    bool isModal = false;

    bool operator==(const Accessibility&) const = default;
};

/// One view as assistive technology tells it, in the person's language.
struct AccessibilityElement {
    /// The view, its role, which is never `none`, and its name.
    std::shared_ptr<View> view{};
    AccessibilityRole role = AccessibilityRole::none;
    std::string name{};
    /// The text typed into a field; empty for every other view.
    std::string value{};
    /// The view's `Accessibility::hint`.
    std::string hint{};
    /// Whether the person can move the focus to the view: a button or a field that takes input.
    bool isFocusable = false;
    /// Whether a button or a field takes no input.
    bool isDisabled = false;
    /// Whether the field has the keyboard's input.
    bool isFocused = false;
    /// Whether the view says "wait".
    bool isBusy = false;
    /// As in the view's `Accessibility`; an alert is modal, too.
    bool isInvalid = false;
    bool isRequired = false;
    bool isModal = false;
};

/// What assistive technology tells of the topmost screen, in the order of reading and of focus: from the top down and
/// along the lines of the person's language. A view under a modal one, an image without a name and a wheel that stands
/// still are left out. The name of an alert is its text; the list has no second element for the text. Main thread.
KIVO_EXPORT std::vector<AccessibilityElement> accessibilityElements(Window& window);

/// Finds the texts that assistive technology speaks although the focus stays where it is. Main thread.
class KIVO_EXPORT AccessibilityAnnouncements {
public:
    /// The texts to announce since the last call, or since the first screen: the title or the first heading of a new
    /// screen, and each status and each wheel that appeared or changed. `elements` are those of `window` now. An alert
    /// is not among the texts: its arrival is told by the focus that moves into it.
    std::vector<std::string> next(const Window& window, const std::vector<AccessibilityElement>& elements);

private:
    struct Told {
        std::weak_ptr<View> view;
        std::string text;
    };

    std::weak_ptr<ViewController> screen_;
    std::vector<Told> told_;
};

} // namespace kivo::platform
