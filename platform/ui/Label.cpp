#include <kivo/platform/ui/Label.hpp>

#include <utility>

namespace kivo::platform {

Label::Label() {
    setUserInteractionEnabled(false);
}

void Label::setText(std::string text) {
    if (text != text_) {
        text_ = std::move(text);
        setNeedsLayout();
        noteChange();
    }
}

Size Label::sizeThatFits(double widthLimit) {
    return text_.empty() ? Size{} : measure(text_, widthLimit);
}

} // namespace kivo::platform
