#include "services/acquisition/qr/inhouse/LuOTPTextField.hpp"

namespace kivo {

bool LuOTPTextField::deleteBackward() {
    // A field with text has its delegate asked by the deletion itself.
    const bool wasEmpty = text().empty();
    const bool changed = TextField::deleteBackward();
    if (const auto listener = delegate(); wasEmpty && listener) {
        listener->shouldChangeCharacters(*this, {.location = 0, .length = 0}, "");
    }
    return changed;
}

} // namespace kivo
