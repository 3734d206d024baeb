#include "Text.hpp"

#include "Balance.hpp"

#include <kivo/device/Fonts.hpp>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>

namespace kivo::device {
namespace {

/// Qt counts lengths in 1/64 of a point, in 32 bits.
constexpr double widestLine = 1e6;

/// A text broken into lines.
class Lines {
public:
    Lines(QString text, const QFont& font, double width, Qt::Alignment alignment)
        : layout_{text.replace('\n', QChar::LineSeparator), font}
        , lineHeight_{QFontMetricsF{font}.height()} {
        QTextOption option{alignment};
        option.setTextDirection(Qt::LayoutDirectionAuto);
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout_.setTextOption(option);
        layout_.beginLayout();
        for (auto line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
            line.setLineWidth(std::clamp(width, 0.0, widestLine));
            line.setPosition({0, height_});
            widest_ = std::max(widest_, line.naturalTextWidth());
            height_ += lineHeight_;
        }
        layout_.endLayout();
    }

    double widest() const { return widest_; }

    double height() const { return std::max(height_, lineHeight_); }

    void draw(QPainter& painter, QPointF position) const { layout_.draw(&painter, position); }

    /// Fills the place of each line, in whole pixels.
    void fill(QPainter& painter, QPointF position, const QColor& color) const {
        painter.setRenderHint(QPainter::Antialiasing, false);
        for (int i = 0; i < layout_.lineCount(); ++i) {
            painter.fillRect(layout_.lineAt(i).naturalTextRect().translated(position), color);
        }
        painter.setRenderHint(QPainter::Antialiasing);
    }

private:
    QTextLayout layout_;
    double lineHeight_;
    double widest_ = 0;
    double height_ = 0;
};

/// The device's own typeface: Inter where it is installed, otherwise the desktop's.
const QFont& ownTypeface() {
    static const auto typeface =
        installedTypeface("Inter").value_or(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    return typeface;
}

/// The typeface of that name, looked up once. Main thread.
const QFont& typefaceOf(const std::string& name) {
    static std::map<std::string, QFont, std::less<>> known;
    const auto found = known.find(name);
    return found != known.end()
               ? found->second
               : known.emplace(name, installedTypeface(toQt(name)).value_or(ownTypeface())).first->second;
}

class QtFonts final : public platform::Fonts {
public:
    bool isInstalled(std::string_view name) override { return installedTypeface(toQt(name)).has_value(); }

    platform::Size measure(std::string_view text, std::string_view name, double pointSize, double widthLimit) override {
        return measureText(toQt(text), toQt(platform::Font{.name = std::string{name}, .pointSize = pointSize}),
                           widthLimit);
    }
};

} // namespace

std::optional<QFont> installedTypeface(const QString& name) {
    if (QFontDatabase::families().contains(name)) {
        return QFont{name};
    }
    const auto dash = name.lastIndexOf('-');
    const auto family = name.left(dash);
    const auto style = name.mid(dash + 1);
    for (const auto& each : dash > 0 ? QFontDatabase::styles(family) : QStringList{}) {
        // "Inter-SemiBold" is the style "Semi Bold".
        if (QString{each}.remove(' ') == style) {
            return QFontDatabase::font(family, each, 1);
        }
    }
    return std::nullopt;
}

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QColor toQt(const platform::Color& color, platform::UserInterfaceStyle style) {
    const auto shown = color.in(style);
    const auto channel = [](double level) { return static_cast<float>(std::clamp(level, 0.0, 1.0)); };
    return QColor::fromRgbF(channel(shown.red), channel(shown.green), channel(shown.blue), channel(shown.alpha));
}

QRectF toQt(const platform::Rect& rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

platform::Rect fromQt(const QRectF& rect) {
    return {.origin = {rect.x(), rect.y()}, .size = {rect.width(), rect.height()}};
}

QFont toQt(const platform::Font& font) {
    auto made = font.name.empty() ? ownTypeface() : typefaceOf(font.name);
    made.setPixelSize(std::max(static_cast<int>(std::lround(font.pointSize)), 1));
    // Without hinting a text has the same width on displays of every density.
    made.setHintingPreference(QFont::PreferNoHinting);
    return made;
}

Qt::Alignment toQt(platform::TextAlignment alignment) {
    switch (alignment) {
    case platform::TextAlignment::left:
        return Qt::AlignLeft | Qt::AlignAbsolute;
    case platform::TextAlignment::center:
        return Qt::AlignHCenter;
    case platform::TextAlignment::right:
        return Qt::AlignRight | Qt::AlignAbsolute;
    case platform::TextAlignment::natural:
        break;
    }
    return Qt::AlignLeft;
}

platform::Size measureText(const QString& text, const QFont& font, double widthLimit) {
    const Lines lines{text, font, widthLimit, Qt::AlignLeft};
    return {std::min(std::ceil(lines.widest()), widthLimit), std::ceil(lines.height())};
}

void drawText(QPainter& painter, const QRectF& area, const QString& text, const QFont& font, Qt::Alignment alignment,
              const Letters& letters) {
    const auto shown = alignment.testFlag(Qt::AlignHCenter) ? balanced(text, font, area.width()) : text;
    const Lines lines{shown, font, area.width(), alignment & Qt::AlignHorizontal_Mask};
    const auto spare = alignment.testFlag(Qt::AlignVCenter) ? (area.height() - lines.height()) / 2 : 0;
    const QPointF position{area.x(), area.y() + std::max(spare, 0.0)};
    if (letters.areBlocks) {
        lines.fill(painter, position, letters.color.value_or(painter.pen().color()));
    } else if (letters.areDrawn) {
        lines.draw(painter, position);
    }
}

std::shared_ptr<platform::Fonts> fonts() {
    return std::make_shared<QtFonts>();
}

} // namespace kivo::device
