#include "Content.hpp"
#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/device/LayoutFaults.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>

namespace kivo::device {
namespace {

using platform::Size;
using platform::View;

/// Some lengths are rounded.
constexpr double tolerance = 1;

struct Seen {
    std::shared_ptr<View> view;
    /// The visible part of the view, on the display.
    QRectF part;
};

bool hasContent(const View& view) {
    if (const auto* button = dynamic_cast<const platform::Button*>(&view)) {
        return !button->title().empty() || button->image() || button->backgroundImage();
    }
    if (const auto* image = dynamic_cast<const platform::ImageView*>(&view)) {
        return image->image() != nullptr;
    }
    return dynamic_cast<const platform::TextField*>(&view) != nullptr || !view.shownText().empty();
}

/// Calls `visit` for each view with visible content.
template <class Visit>
void eachSeen(const std::shared_ptr<View>& view, const Visit& visit) {
    if (view->isHidden() || view->alpha() == 0) {
        return;
    }
    if (hasContent(*view)) {
        visit(view);
    }
    for (const auto& subview : view->subviews()) {
        eachSeen(subview, visit);
    }
}

std::string named(const View& view) {
    return "\"" + (view.identifier().empty() ? view.shownText() : view.identifier()) + "\"";
}

bool isInScrollView(const View& view) {
    for (auto around = view.superview(); around; around = around->superview()) {
        if (std::dynamic_pointer_cast<platform::ScrollView>(around)) {
            return true;
        }
    }
    return false;
}

bool fits(Size size, const QRectF& room) {
    return size.width <= room.width() + tolerance && size.height <= room.height() + tolerance;
}

bool textFits(const View& view) {
    const auto bounds = toQt(view.bounds());
    if (const auto* label = dynamic_cast<const platform::Label*>(&view)) {
        return fits(measureText(toQt(label->text()), toQt(label->fittedFont()), bounds.width()), bounds);
    }
    if (const auto* button = dynamic_cast<const platform::Button*>(&view); button && !button->title().empty()) {
        const auto room = bounds.adjusted(0, 0, button->image() ? -button->image()->size.width : 0, 0);
        return fits(measureText(toQt(button->title()), toQt(button->shownFont()), room.width()), room);
    }
    if (const auto* field = dynamic_cast<const platform::TextField*>(&view)) {
        // The text of a field scrolls, so one character must fit. A placeholder does not scroll and must fit whole.
        const auto sample = field->text().empty() && !field->placeholder().empty() ? toQt(field->placeholder()) : "W";
        return fits(measureText(sample, shownFont(*field), 1e6), textArea(*field));
    }
    return true;
}

} // namespace

std::vector<std::string> layoutFaults(platform::Window& window) {
    window.layoutIfNeeded();
    std::vector<std::string> faults;
    std::vector<Seen> seen;
    const auto see = [&](const std::shared_ptr<View>& view) {
        const auto whole = toQt(view->frameOnScreen());
        const auto part = visiblePart(*view);
        if (whole.width() < tolerance || whole.height() < tolerance) {
            faults.push_back(named(*view) + " has no room");
            return;
        }
        const bool reaches = part.width() >= whole.width() - tolerance && part.height() >= whole.height() - tolerance;
        const bool canScroll = isInScrollView(*view) && whole.left() >= -tolerance &&
                               whole.right() <= window.frame().size.width + tolerance;
        if (!reaches && !canScroll) {
            faults.push_back(named(*view) + " is partly or wholly out of sight");
        }
        if (!textFits(*view)) {
            faults.push_back(named(*view) + " is too small for its text");
        }
        seen.push_back({view, part});
    };
    for (const auto& view : window.reachableViews()) {
        eachSeen(view, see);
    }
    for (std::size_t i = 0; i < seen.size(); ++i) {
        for (std::size_t j = i + 1; j < seen.size(); ++j) {
            const auto shared = seen[i].part.intersected(seen[j].part);
            if (shared.width() > tolerance && shared.height() > tolerance &&
                !seen[j].view->isDescendantOf(*seen[i].view)) {
                faults.push_back(named(*seen[i].view) + " and " + named(*seen[j].view) + " overlap");
            }
        }
    }
    return faults;
}

} // namespace kivo::device
