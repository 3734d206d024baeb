#include "Content.hpp"
#include "Contrast.hpp"
#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/device/LayoutFaults.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <QColor>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace kivo::device {
namespace {

using platform::Size;
using platform::UserInterfaceStyle;
using platform::View;

/// Some lengths are rounded.
constexpr double tolerance = 1;
constexpr double finger = 44;

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

bool fits(Size size, const QRectF& room) {
    return size.width <= room.width() + tolerance && size.height <= room.height() + tolerance;
}

/// Whether a part of the text inside which no line may break, such as a word, is longer than a line of that width.
bool breaksWord(const QString& text, const QFont& font, double width) {
    QTextBoundaryFinder breaks{QTextBoundaryFinder::Line, text};
    for (auto begin = breaks.position(); breaks.toNextBoundary() >= 0; begin = breaks.position()) {
        const auto part = text.mid(begin, breaks.position() - begin).trimmed();
        if (measureText(part, font, 1e6).width > width + tolerance) {
            return true;
        }
    }
    return false;
}

bool breaksWord(const View& view) {
    const auto width = view.bounds().size.width;
    if (const auto* label = dynamic_cast<const platform::Label*>(&view)) {
        return breaksWord(toQt(label->text()), toQt(label->fittedFont()), width);
    }
    const auto* const button = dynamic_cast<const platform::Button*>(&view);
    return button != nullptr && breaksWord(toQt(button->title()), toQt(button->shownFont()), width);
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

bool isControl(const View& view) {
    return dynamic_cast<const platform::Control*>(&view) != nullptr;
}

/// Whether a finger on the middle of a control touches no other control. Both may be scrolled out of sight in part.
bool hasRoomForAFinger(const Seen& control, const std::vector<Seen>& all) {
    const auto place = toQt(control.view->frameOnScreen());
    const auto beside = std::max(finger - place.width(), 0.0) / 2;
    const auto above = std::max(finger - place.height(), 0.0) / 2;
    const auto touched = place.adjusted(-beside + tolerance, -above + tolerance, beside - tolerance, above - tolerance);
    return (beside == 0 && above == 0) || std::ranges::none_of(all, [&](const Seen& other) {
               return other.view != control.view && isControl(*other.view) &&
                      touched.intersects(toQt(other.view->frameOnScreen()));
           });
}

/// `over` as it looks on `ground`.
QColor blended(const QColor& over, const QColor& ground) {
    const auto mix = [&](float front, float back) { return front * over.alphaF() + back * (1 - over.alphaF()); };
    return QColor::fromRgbF(mix(over.redF(), ground.redF()), mix(over.greenF(), ground.greenF()),
                            mix(over.blueF(), ground.blueF()));
}

/// The colour behind a view's content, by the backgrounds of the view and of the views around.
QColor groundOf(const View& view) {
    const auto around = view.superview();
    const auto style = view.userInterfaceStyle();
    const auto behind = around ? groundOf(*around) : QColor{style == UserInterfaceStyle::dark ? Qt::black : Qt::white};
    return view.backgroundColor() ? blended(toQt(*view.backgroundColor(), style), behind) : behind;
}

/// The colour of a view's text or of its picture's shape; absent for other content.
std::optional<QColor> inkOf(const View& view) {
    if (const auto* label = dynamic_cast<const platform::Label*>(&view)) {
        return toQt(label->textColor(), view.userInterfaceStyle());
    }
    if (const auto* button = dynamic_cast<const platform::Button*>(&view);
        button && !button->title().empty() && !button->backgroundImage()) {
        return titleColor(*button);
    }
    if (const auto* field = dynamic_cast<const platform::TextField*>(&view)) {
        return field->text().empty() ? placeholderColor(*field) : toQt(field->textColor(), view.userInterfaceStyle());
    }
    if (const auto* image = dynamic_cast<const platform::ImageView*>(&view); image && image->image()->isTemplate) {
        return templateColor(view);
    }
    return std::nullopt;
}

bool contrasts(const View& view, double leastContrast) {
    const auto ink = inkOf(view);
    if (!ink) {
        return true;
    }
    const auto ground = groundOf(view);
    return contrastOf(ground, blended(*ink, ground)) >= leastContrast;
}

const platform::ScrollView* scrollAround(const View& view) {
    const auto around = view.superview();
    const auto* const scroll = dynamic_cast<const platform::ScrollView*>(around.get());
    return scroll != nullptr || !around ? scroll : scrollAround(*around);
}

/// Whether a person reads `first` after `second`: it stands below, or behind in the line.
bool isReadAfter(const View& first, const View& second) {
    const auto place = toQt(first.frameOnScreen());
    const auto other = toQt(second.frameOnScreen());
    const bool isMirrored = first.superview()->layoutDirection() == platform::LayoutDirection::rightToLeft;
    const bool isBehind =
        isMirrored ? place.right() <= other.left() + tolerance : place.left() >= other.right() - tolerance;
    const bool isInOneLine = place.top() < other.bottom() - tolerance && place.bottom() > other.top() + tolerance;
    return isInOneLine ? isBehind : place.top() >= other.bottom() - tolerance;
}

/// The faults of what assistive technology tells.
void findToldFaults(platform::Window& window, std::vector<std::string>& faults) {
    const platform::AccessibilityElement* former = nullptr;
    std::set<std::pair<platform::AccessibilityRole, std::string>> names;
    const auto elements = platform::accessibilityElements(window);
    for (const auto& element : elements) {
        if (!isControl(*element.view)) {
            continue;
        }
        if (element.name.empty()) {
            faults.push_back(named(*element.view) + " has no name for assistive technology");
        } else if (!names.emplace(element.role, element.name).second) {
            faults.push_back(named(*element.view) + " has the name of another control, \"" + element.name + "\"");
        }
        // Only elements of the same scroll view are compared: scrolling moves them past all other elements.
        if (former != nullptr && scrollAround(*former->view) == scrollAround(*element.view) &&
            isReadAfter(*former->view, *element.view)) {
            faults.push_back(named(*former->view) + " is told before " + named(*element.view));
        }
        former = &element;
    }
}

} // namespace

std::vector<std::string> layoutFaults(platform::Window& window, double leastContrast) {
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
        if (breaksWord(*view)) {
            faults.push_back(named(*view) + " breaks a word");
        }
        if (!contrasts(*view, leastContrast)) {
            faults.push_back(named(*view) + " hardly differs from its background");
        }
        seen.push_back({view, part});
    };
    for (const auto& view : window.reachableViews()) {
        eachSeen(view, see);
    }
    for (const auto& each : seen) {
        if (isControl(*each.view) && !hasRoomForAFinger(each, seen)) {
            faults.push_back(named(*each.view) + " is too small for a finger");
        }
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
    findToldFaults(window, faults);
    return faults;
}

} // namespace kivo::device
