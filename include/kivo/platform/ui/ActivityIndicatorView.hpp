#pragma once

#include <kivo/platform/ui/View.hpp>

namespace kivo::platform {

/// The turning wheel that says "wait".
class KIVO_EXPORT ActivityIndicatorView : public View {
public:
    /// The two sizes.
    enum class Style { medium, large };

    /// A view that stands still.
    explicit ActivityIndicatorView(Style style = Style::medium)
        : style_{style} {}

    /// The size.
    Style style() const { return style_; }

    /// The colour of the wheel.
    const Color& color() const { return color_; }

    void setColor(Color color);

    /// Whether the wheel turns, and is seen.
    bool isAnimating() const { return isAnimating_; }

    /// Begins or ends the turning.
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
