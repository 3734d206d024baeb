#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <optional>
#include <string_view>

namespace kivo::platform {

/// Posted to the default notification centre when the keyboard comes, with a `KeyboardFrame` as its object, and when it
/// goes. Moving from one field to the next posts neither.
inline constexpr std::string_view keyboardWillShow = "keyboardWillShow";
inline constexpr std::string_view keyboardWillHide = "keyboardWillHide";

/// Where the keyboard is before it moves, and after; in the window's coordinates.
struct KeyboardFrame {
    std::optional<Rect> begin{};
    std::optional<Rect> end{};
};

/// The keyboard of the device. One view at a time has its input: the first responder.
class KIVO_EXPORT Keyboard {
public:
    /// The view that has the input; null when none has.
    static std::shared_ptr<View> firstResponder();

    /// Whether the keyboard is on the display: it is while the first responder is in a window.
    static bool isShown();
};

} // namespace kivo::platform
