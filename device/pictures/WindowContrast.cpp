#include "WindowContrast.hpp"

#include "src/Contrast.hpp"

#include <QAbstractButton>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTabBar>
#include <QTreeWidget>
#include <algorithm>
#include <map>
#include <vector>

namespace kivo::device::pictures {
namespace {

constexpr int edge = 3; // points of a widget that may hold its border

/// Collects the places of texts, each in the coordinates of the window.
class Places {
public:
    Places(const QWidget& window, const QWidget& except)
        : window_{window} {
        for (const auto* each : window.findChildren<QWidget*>()) {
            if (each->isVisible() && each->isEnabled() && each != &except && !except.isAncestorOf(each)) {
                addTextsOf(*each);
            }
        }
    }

    const std::vector<QRect>& all() const { return all_; }

private:
    void add(const QWidget& widget, const QRect& place) {
        const auto seen = place.intersected(widget.visibleRegion().boundingRect());
        // Half a line of letters is no sample.
        if (seen.height() >= place.height() && !seen.isEmpty()) {
            all_.push_back(seen.translated(widget.mapTo(&window_, QPoint{})));
        }
    }

    void addTextsOf(const QWidget& widget) {
        const auto whole = widget.rect().adjusted(edge, edge, -edge, -edge);
        if (const auto* bar = qobject_cast<const QTabBar*>(&widget)) {
            for (int i = 0; i < bar->count(); ++i) {
                add(widget, bar->tabRect(i).adjusted(edge, edge, -edge, -edge));
            }
        } else if (const auto* tree = qobject_cast<const QTreeWidget*>(&widget)) {
            for (int row = 0; row < tree->topLevelItemCount(); ++row) {
                for (int column = 0; column < tree->columnCount(); ++column) {
                    add(*tree->viewport(),
                        tree->visualRect(tree->model()->index(row, column)).adjusted(edge, edge, -edge, -edge));
                }
            }
        } else if (const auto* header = qobject_cast<const QHeaderView*>(&widget)) {
            for (int i = 0; i < header->count(); ++i) {
                add(*header->viewport(), {header->sectionViewportPosition(i) + edge, edge,
                                          header->sectionSize(i) - 2 * edge, header->height() - 2 * edge});
            }
        } else if (qobject_cast<const QComboBox*>(&widget) != nullptr ||
                   qobject_cast<const QLineEdit*>(&widget) != nullptr || hasText<QLabel>(widget) ||
                   hasText<QAbstractButton>(widget)) {
            add(widget, whole);
        }
    }

    template <class Widget>
    static bool hasText(const QWidget& widget) {
        const auto* const one = qobject_cast<const Widget*>(&widget);
        return one != nullptr && !one->text().isEmpty();
    }

    const QWidget& window_;
    std::vector<QRect> all_;
};

double contrastIn(const QImage& picture, const QRect& area) {
    std::map<QRgb, int> counts;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            ++counts[picture.pixel(x, y)];
        }
    }
    const auto ground = std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; })->first;
    double most = 1;
    for (const auto& [color, count] : counts) {
        most = std::max(most, contrastOf(QColor{color}, QColor{ground}));
    }
    return most;
}

} // namespace

WidgetContrast widgetContrast(const QWidget& window, const QWidget& except, const QImage& picture) {
    const auto scale = picture.width() / window.width();
    WidgetContrast found;
    const Places places{window, except};
    for (const auto& place : places.all()) {
        const QRect area{place.topLeft() * scale, place.size() * scale};
        found.least = std::min(found.least, contrastIn(picture, area.intersected(picture.rect())));
        ++found.texts;
    }
    return found;
}

} // namespace kivo::device::pictures
