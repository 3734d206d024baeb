#include "Content.hpp"

#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/PreviewView.hpp>
#include <kivo/platform/ui/TextView.hpp>

#include <QFontMetricsF>
#include <QHash>
#include <QImage>
#include <algorithm>
#include <cstdint>
#include <vector>

namespace kivo::device {
namespace {

using platform::Color;

constexpr double fieldMargin = 8;
constexpr double imageSpacing = 8;
constexpr double disabledOpacity = 0.4;
constexpr int spokes = 12;
constexpr auto plainPlaceholderColor = Color::adaptive(Color::white(0.43), Color::white(0.62));

QRectF bounds(const platform::View& view) {
    return toQt(view.bounds());
}

/// The decoded picture in the appearance of `view`, kept for the next time; null when its file cannot be decoded.
QImage decoded(const platform::Image& image, const platform::View& view) {
    static QHash<QString, QImage> pictures;
    const auto file = QString::fromStdString(image.fileIn(view.userInterfaceStyle()).string());
    const auto known = pictures.constFind(file);
    return known != pictures.constEnd() ? *known : *pictures.insert(file, QImage{file});
}

/// The shape of the picture in one colour.
QImage tinted(const QImage& picture, const QColor& color) {
    auto result = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter{&result};
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(result.rect(), color);
    return result;
}

/// The picture as `view` shows it.
QImage pictureOf(const platform::Image& image, const platform::View& view) {
    return image.isTemplate ? tinted(decoded(image, view), templateColor(view)) : decoded(image, view);
}

/// The largest rectangle with the proportions of `size`, in the middle of `area`.
QRectF fitted(QSizeF size, const QRectF& area) {
    size.scale(area.size(), Qt::KeepAspectRatio);
    QRectF result{{}, size};
    result.moveCenter(area.center());
    return result;
}

/// Whether the button is drawn in the tint colour. The buttons of bars and alerts have no colours of their own.
bool isTinted(const platform::Button& button) {
    const auto around = button.superview();
    return around && (around->identifier() == "navigationBar" ||
                      around->accessibilityRole() == platform::AccessibilityRole::alert);
}

/// Where the lines of a label stand. Qt does not turn `AlignLeft` round for a language that is read from the right.
Qt::Alignment alignmentOf(const platform::Label& label) {
    const bool isMirrored = label.textAlignment() == platform::TextAlignment::natural &&
                            label.layoutDirection() == platform::LayoutDirection::rightToLeft;
    return isMirrored ? Qt::AlignRight | Qt::AlignAbsolute : toQt(label.textAlignment());
}

void drawLabel(QPainter& painter, const platform::Label& label, const Letters& letters) {
    const bool isLong = dynamic_cast<const platform::TextView*>(&label) != nullptr;
    painter.setPen(toQt(label.textColor(), label.userInterfaceStyle()));
    drawText(painter, bounds(label), toQt(label.text()), toQt(label.fittedFont()),
             alignmentOf(label) | (isLong ? Qt::AlignTop : Qt::AlignVCenter), letters);
}

void drawButton(QPainter& painter, const platform::Button& button, const Letters& letters) {
    const auto area = bounds(button);
    const auto color = titleColor(button);
    painter.setOpacity(painter.opacity() * (button.isEnabled() ? 1 : disabledOpacity));
    if (const auto& background = button.backgroundImage()) {
        painter.drawImage(area, decoded(*background, button));
    }
    auto titleArea = area;
    if (const auto& image = button.image()) {
        const QSizeF size{image->size.width, image->size.height};
        const auto title = toQt(button.title());
        const auto font = toQt(button.shownFont());
        const auto titleWidth =
            title.isEmpty() ? 0
                            : imageSpacing + measureText(title, font, area.width() - size.width() - imageSpacing).width;
        const QRectF place{area.x() + (area.width() - size.width() - titleWidth) / 2, area.y(), size.width(),
                           area.height()};
        painter.drawImage(fitted(size.boundedTo(area.size()), place),
                          isTinted(button) ? tinted(decoded(*image, button), color) : pictureOf(*image, button));
        titleArea = {place.right() + imageSpacing, area.y(), std::max(titleWidth - imageSpacing, 0.0), area.height()};
    }
    painter.setPen(color);
    const auto alignment = button.textAlignment() == platform::TextAlignment::natural ? Qt::Alignment{Qt::AlignHCenter}
                                                                                      : toQt(button.textAlignment());
    drawText(painter, titleArea, toQt(button.title()), toQt(button.shownFont()), alignment | Qt::AlignVCenter, letters);
}

void drawCursor(QPainter& painter, const platform::TextField& field, const QRectF& area, const QFont& font) {
    const QFontMetricsF metrics{font};
    const auto text = toQt(field.text());
    const auto before = toQt(text::firstCharacters(field.text(), field.selection().location).value_or(field.text()));
    const auto spare = std::max(area.width() - metrics.horizontalAdvance(text), 0.0);
    const auto alignment = toQt(field.textAlignment());
    const auto start = alignment.testFlag(Qt::AlignHCenter) ? spare / 2
                       : alignment.testFlag(Qt::AlignRight) ? spare
                                                            : 0;
    const auto x = std::min(area.x() + start + metrics.horizontalAdvance(before), area.right());
    painter.fillRect(QRectF{x, area.center().y() - metrics.height() / 2, 2, metrics.height()},
                     toQt(field.tintColor().value_or(Color::systemBlue()), field.userInterfaceStyle()));
}

void drawField(QPainter& painter, const platform::TextField& field, const Letters& letters) {
    const auto area = textArea(field);
    const auto font = shownFont(field);
    const auto& attributes = field.attributedText();
    painter.save();
    painter.setClipRect(area, Qt::IntersectClip);
    const auto textColor = attributes ? attributes->foregroundColor.value_or(field.textColor()) : field.textColor();
    painter.setPen(field.text().empty() ? placeholderColor(field) : toQt(textColor, field.userInterfaceStyle()));
    // A text has one line, and its end is cut off, as in a field that scrolls sideways.
    const auto text = toQt(field.shownText());
    auto line = area;
    line.setWidth(std::max(area.width(), measureText(text, font, 1e6).width));
    drawText(painter, line, text, font, toQt(field.textAlignment()) | Qt::AlignVCenter, letters);
    if (field.isFirstResponder()) {
        drawCursor(painter, field, area, font);
    }
    painter.restore();
}

void drawImage(QPainter& painter, const platform::ImageView& view) {
    if (const auto& image = view.image()) {
        auto picture = pictureOf(*image, view);
        if (image->isDirectional && view.layoutDirection() == platform::LayoutDirection::rightToLeft) {
            picture = picture.mirrored(/*horizontal=*/true, /*vertical=*/false);
        }
        painter.drawImage(fitted(picture.size(), bounds(view)), picture);
    }
}

void drawIndicator(QPainter& painter, const platform::ActivityIndicatorView& indicator, double turn) {
    if (!indicator.isAnimating()) {
        return;
    }
    const auto area = bounds(indicator);
    const auto radius = std::min(area.width(), area.height()) / 2;
    painter.save();
    painter.translate(area.center());
    auto color = toQt(indicator.color(), indicator.userInterfaceStyle());
    const auto alpha = color.alphaF();
    for (int i = 0; i < spokes; ++i) {
        color.setAlphaF(alpha * static_cast<float>(i + 1) / static_cast<float>(spokes));
        painter.setPen(QPen{color, radius / 5, Qt::SolidLine, Qt::RoundCap});
        painter.save();
        painter.rotate(360 * (static_cast<double>(i) / spokes + turn));
        painter.drawLine(QPointF{0, -radius * 0.5}, QPointF{0, -radius * 0.88});
        painter.restore();
    }
    painter.restore();
}

/// Draws the camera's picture so that it fills the view. The parts beyond two of the view's sides are cut off.
void drawPreview(QPainter& painter, const platform::PreviewView& view) {
    const auto area = bounds(view);
    painter.fillRect(area, Qt::black);
    const auto preview = view.previewSession() ? view.previewSession()->preview().picture : nullptr;
    const auto pixels = preview ? preview->rgb() : std::vector<std::uint8_t>{};
    if (pixels.empty()) {
        return;
    }
    const QImage picture{pixels.data(), preview->width, preview->height, qsizetype{3} * preview->width,
                         QImage::Format_RGB888};
    const auto seen = fitted(area.size(), picture.rect());
    painter.drawImage(area, picture, seen);
}

} // namespace

QColor titleColor(const platform::Button& button) {
    return toQt(isTinted(button) ? button.tintColor().value_or(Color::systemBlue()) : button.textColor(),
                button.userInterfaceStyle());
}

QColor templateColor(const platform::View& view) {
    return toQt(view.tintColor().value_or(Color::black()), view.userInterfaceStyle());
}

QRectF textArea(const platform::TextField& field) {
    const auto widthOf = [](const auto& view) { return view ? view->frame().size.width : 0; };
    return bounds(field).adjusted(fieldMargin + widthOf(field.leftView()), 0, -fieldMargin - widthOf(field.rightView()),
                                  0);
}

QColor placeholderColor(const platform::TextField& field) {
    const auto& attributes = field.attributedPlaceholder();
    return toQt(attributes ? attributes->foregroundColor.value_or(plainPlaceholderColor) : plainPlaceholderColor,
                field.userInterfaceStyle());
}

QFont shownFont(const platform::TextField& field) {
    const auto& attributes = field.text().empty() ? field.attributedPlaceholder() : field.attributedText();
    auto font = toQt(attributes && attributes->font ? *attributes->font : field.shownFont());
    if (attributes && attributes->kern) {
        font.setLetterSpacing(QFont::AbsoluteSpacing, *attributes->kern);
    }
    return font;
}

void drawContent(QPainter& painter, platform::View& view, const DrawState& state) {
    if (const auto* label = dynamic_cast<platform::Label*>(&view)) {
        drawLabel(painter, *label, state.letters);
    } else if (const auto* button = dynamic_cast<platform::Button*>(&view)) {
        drawButton(painter, *button, state.letters);
    } else if (const auto* field = dynamic_cast<platform::TextField*>(&view)) {
        if (!state.isDrawnElsewhere(*field)) {
            drawField(painter, *field, state.letters);
        }
    } else if (const auto* image = dynamic_cast<platform::ImageView*>(&view)) {
        drawImage(painter, *image);
    } else if (const auto* preview = dynamic_cast<platform::PreviewView*>(&view)) {
        drawPreview(painter, *preview);
    } else if (const auto* indicator = dynamic_cast<platform::ActivityIndicatorView*>(&view)) {
        drawIndicator(painter, *indicator, state.turn);
    }
}

} // namespace kivo::device
