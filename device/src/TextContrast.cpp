#include "Contrast.hpp"
#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/device/TextContrast.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace kivo::device {
namespace {

using platform::View;

constexpr double forText = 7;
constexpr double forLargeText = 4.5;
constexpr int largeText = 24; // points

/// The window drawn several times, with a pixel for a point.
struct Drawings {
    explicit Drawings(platform::Window& window)
        : ground{pictureOf(window, 1, {.letters = {.areDrawn = false}})}
        , ink{pictureOf(window, 1, {.letters = {.areBlocks = true}})}
        , red{pictureOf(window, 1, {.letters = {.areBlocks = true, .color = Qt::red}})}
        , blue{pictureOf(window, 1, {.letters = {.areBlocks = true, .color = Qt::blue}})} {}

    /// Whether the pixel belongs to a text in sight: the colour of the texts is the only difference between the two.
    bool isText(QPoint pixel) const { return red.pixel(pixel) != blue.pixel(pixel); }

    QImage ground;
    QImage ink;
    QImage red;
    QImage blue;
};

std::string textOf(const View& view) {
    if (const auto* field = dynamic_cast<const platform::TextField*>(&view)) {
        return field->shownText();
    }
    const auto* const button = dynamic_cast<const platform::Button*>(&view);
    return button != nullptr ? button->title() : view.shownText();
}

/// Whether a finger does not reach the text, because another view takes the touch.
bool isCovered(platform::Window& window, View& view, const QRectF& part) {
    const auto hit = window.hitTest({part.center().x(), part.center().y()});
    return hit && !hit->isDescendantOf(view) && !view.isDescendantOf(*hit);
}

/// The contrast that the text of an enabled view needs.
double leastContrast(const View& view) {
    if (const auto* label = dynamic_cast<const platform::Label*>(&view)) {
        return toQt(label->fittedFont()).pixelSize() < largeText ? forText : forLargeText;
    }
    const auto* const field = dynamic_cast<const platform::TextField*>(&view);
    return field != nullptr && !field->text().empty() && shownFont(*field).pixelSize() < largeText ? forText
                                                                                                   : forLargeText;
}

struct Measured {
    double contrast = 21;
    /// Whether something translucent lies over the text.
    bool isDimmed = false;
};

/// The least contrast of the pixels that the text has in `part`; absent when the text has none there.
std::optional<Measured> contrastIn(const Drawings& drawings, const QRectF& part) {
    std::optional<Measured> found;
    const auto area = part.toAlignedRect().intersected(drawings.ground.rect());
    std::pair<QRgb, QRgb> former;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const std::pair colors{drawings.ink.pixel(x, y), drawings.ground.pixel(x, y)};
            // Most neighbours are alike.
            if (drawings.isText({x, y}) && (!found || colors != former)) {
                found = found.value_or(Measured{});
                found->contrast = std::min(found->contrast, contrastOf(QColor{colors.first}, QColor{colors.second}));
                found->isDimmed = found->isDimmed || drawings.red.pixel(x, y) != QColor{Qt::red}.rgb();
                former = colors;
            }
        }
    }
    return found;
}

} // namespace

std::vector<TextContrast> textContrasts(platform::Window& window) {
    window.layoutIfNeeded();
    const Drawings drawings{window};
    std::vector<TextContrast> found;
    const auto visit = [&](const auto& self, const std::shared_ptr<View>& view) -> void {
        if (view->isHidden() || view->alpha() <= 0) {
            return;
        }
        const auto part = visiblePart(*view);
        const auto text = textOf(*view);
        if (const auto measured = text.empty() ? std::nullopt : contrastIn(drawings, part)) {
            const auto* const control = dynamic_cast<const platform::Control*>(view.get());
            const bool isIdle =
                (control != nullptr && !control->isEnabled()) || (measured->isDimmed && isCovered(window, *view, part));
            found.push_back({text, measured->contrast, isIdle ? 0 : leastContrast(*view)});
        }
        for (const auto& subview : view->subviews()) {
            self(self, subview);
        }
    };
    for (const auto& view : window.reachableViews()) {
        visit(visit, view);
    }
    return found;
}

} // namespace kivo::device
