#pragma once

#include <memory>

namespace kivo::platform {

class View;

/// Gives the keyboard's input to `view`, or to no view when null. Does not call the views or their delegates.
void setFirstResponder(const std::shared_ptr<View>& view);

/// Whether `view`, which is being destroyed, had the keyboard's input.
bool wasFirstResponder(const View* view);

/// Whether `view` cannot take the input: a person cannot reach `view`, but can reach the view with the input.
bool keepsInputFrom(View& view);

/// Shows or hides the keyboard, after another view has become first responder or the first responder has entered or
/// left a window.
void updateKeyboard();

/// While it exists, the keyboard is neither shown nor hidden, so that the input can move from one view to the next.
class FocusChange {
public:
    FocusChange();
    FocusChange(const FocusChange&) = delete;
    FocusChange& operator=(const FocusChange&) = delete;
    ~FocusChange();
};

} // namespace kivo::platform
