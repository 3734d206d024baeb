#pragma once

#include "Text.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/View.hpp>

#include <QPainter>
#include <QRectF>
#include <functional>

namespace kivo::device {

/// The changing part of a drawing of a tree.
struct DrawState {
    Letters letters{};
    /// The turn of the activity indicators, from 0 to 1.
    double turn = 0;
    /// Whether a line edit draws the field's text.
    std::function<bool(const platform::TextField&)> isDrawnElsewhere = [](const auto&) { return false; };
};

/// Draws a view's text, image or indicator, in the view's own coordinates.
void drawContent(QPainter& painter, platform::View& view, const DrawState& state);

/// The colour of a button's title.
QColor titleColor(const platform::Button& button);

/// The colour of a picture that gives only a shape.
QColor templateColor(const platform::View& view);

/// The area of a field's text, in the field's own coordinates.
QRectF textArea(const platform::TextField& field);

QColor placeholderColor(const platform::TextField& field);

/// The font of a field's text or, in an empty field, of its placeholder.
QFont shownFont(const platform::TextField& field);

} // namespace kivo::device
