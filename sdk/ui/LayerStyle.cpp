#include <kivo/ui/LayerStyle.hpp>

namespace kivo::ui {

using platform::Color;
using platform::Layer;
using platform::View;

double cornerRadiusExt(const View& view) {
    return view.layer().cornerRadius;
}

void setCornerRadiusExt(View& view, double radius) {
    view.changeLayer([&](Layer& layer) {
        layer.cornerRadius = radius;
        layer.masksToBounds = radius > 0;
    });
}

double borderWidthExt(const View& view) {
    return view.layer().borderWidth;
}

void setBorderWidthExt(View& view, double width) {
    view.changeLayer([&](Layer& layer) { layer.borderWidth = width; });
}

std::optional<Color> borderColorExt(const View& view) {
    return view.layer().borderColor;
}

void setBorderColorExt(View& view, std::optional<Color> color) {
    view.changeLayer([&](Layer& layer) { layer.borderColor = color; });
}

double shadowRadiusExt(const View& view) {
    return view.layer().shadowRadius;
}

void setShadowRadiusExt(View& view, double radius) {
    view.changeLayer([&](Layer& layer) {
        layer.shadowColor = Color::black();
        layer.shadowOffset = {.width = 0, .height = 2};
        layer.shadowOpacity = 0.6;
        layer.shadowRadius = radius;
    });
}

void applyPrimaryButtonStyle(View& view, const Color& borderColor, double cornerRadius, double borderWidth) {
    view.changeLayer([&](Layer& layer) {
        layer.cornerRadius = cornerRadius;
        layer.masksToBounds = true;
        layer.borderColor = borderColor;
        layer.borderWidth = borderWidth;
    });
}

} // namespace kivo::ui
