#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <optional>
#include <string_view>

namespace kivo::platform {

/// Posted to the default notification centre before the keyboard appears, with a `KeyboardFrame` as the object, and
/// before it disappears. Moving from one field to the next posts neither.
inline constexpr std::string_view keyboardWillShow = "keyboardWillShow";
inline constexpr std::string_view keyboardWillHide = "keyboardWillHide";

/// The keyboard's frame before and after its movement, in the window's coordinates.
struct KeyboardFrame {
    /// Where the keyboard was, and where it will be, on the display; absent for a keyboard that is not shown.
    std::optional<Rect> begin{};
    std::optional<Rect> end{};
};

/// The keyboard of the device. One view at a time receives its input: the first responder.
class KIVO_EXPORT Keyboard {
public:
    /// The view that receives the input; null when no view does.
    static std::shared_ptr<View> firstResponder();

    /// Whether the keyboard is on the display, which is so while the first responder is in a window.
    static bool isShown();
};

} // namespace kivo::platform
