#include <kivo/platform/ui/View.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace kivo::platform {

UserInterfaceStyle View::userInterfaceStyle() const {
    if (styleOverride_) {
        return *styleOverride_;
    }
    return superview_ ? superview_->userInterfaceStyle() : UserInterfaceStyle::light;
}

void View::overrideUserInterfaceStyle(std::optional<UserInterfaceStyle> style) {
    if (std::exchange(styleOverride_, style) != style) {
        noteChangeOfTree();
    }
}

LayoutDirection layoutDirectionOf(std::string_view language) {
    constexpr std::array<std::string_view, 10> fromTheRight{"ar", "ckb", "dv", "fa", "he",
                                                            "iw", "ps",  "sd", "ur", "yi"};
    const auto name = language.substr(0, language.find_first_of("_-"));
    return std::ranges::find(fromTheRight, name) == fromTheRight.end() ? LayoutDirection::leftToRight
                                                                       : LayoutDirection::rightToLeft;
}

LayoutDirection View::layoutDirection() const {
    if (directionOverride_) {
        return *directionOverride_;
    }
    return superview_ ? superview_->layoutDirection() : directionOfLanguage();
}

void View::overrideLayoutDirection(std::optional<LayoutDirection> direction) {
    if (std::exchange(directionOverride_, direction) != direction) {
        setNeedsLayoutOfTree();
        noteChangeOfTree();
    }
}

void View::setNeedsLayoutOfTree() {
    setNeedsLayout();
    for (const auto& subview : subviews_) {
        subview->setNeedsLayoutOfTree();
    }
}

void View::noteChangeOfTree() {
    noteChange();
    for (const auto& subview : subviews_) {
        subview->noteChangeOfTree();
    }
}

} // namespace kivo::platform
