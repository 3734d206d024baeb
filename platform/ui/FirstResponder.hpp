#pragma once

#include <memory>

namespace kivo::platform {

class View;

/// Gives the keyboard's input to `view`, or to none. Tells nobody: the views' own doors do that.
void setFirstResponder(const std::shared_ptr<View>& view);

/// Whether `view` had the input until now; for a view that is being destroyed.
bool wasFirstResponder(const View* view);

/// Whether a view that a person can reach has the input now, and `view` is none.
bool keepsInputFrom(View& view);

/// Shows or hides the keyboard after the first responder, or its being in a window, has changed.
void updateKeyboard();

/// Holds the keyboard still while the input moves from one view to the next.
class FocusChange {
public:
    FocusChange();
    FocusChange(const FocusChange&) = delete;
    FocusChange& operator=(const FocusChange&) = delete;
    ~FocusChange();
};

} // namespace kivo::platform
