#pragma once

#include <kivo/platform/ui/View.hpp>

namespace kivo::platform {

/// The turning wheel that says "wait".
class KIVO_EXPORT ActivityIndicatorView : public View {
public:
    enum class Style { medium, large };

    explicit ActivityIndicatorView(Style style = Style::medium)
        : style_{style} {}

    Style style() const { return style_; }

    const Color& color() const { return color_; }

    void setColor(Color color);

    bool isAnimating() const { return isAnimating_; }

    void startAnimating();
    void stopAnimating();

    Size sizeThatFits(double widthLimit) override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::progress; }

private:
    Style style_;
    Color color_ = Color::white(0.5);
    bool isAnimating_ = false;
};

} // namespace kivo::platform
