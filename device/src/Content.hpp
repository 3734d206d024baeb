#pragma once

#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/View.hpp>

#include <QPainter>
#include <QRectF>
#include <functional>

namespace kivo::device {

/// How a tree is drawn at one moment.
struct Moment {
    /// How far the activity indicators have turned; from 0 to 1.
    double turn = 0;
    /// Whether a field's text is drawn by somebody else.
    std::function<bool(const platform::TextField&)> isDrawnElsewhere = [](const auto&) { return false; };
};

/// Draws what a view shows inside its box: text, image, indicator. The origin is the view's own.
void drawContent(QPainter& painter, platform::View& view, const Moment& moment);

/// Where a field's text lies, in its own coordinates.
QRectF textArea(const platform::TextField& field);

QColor placeholderColor(const platform::TextField& field);

/// A field's font with its text's or its placeholder's attributes.
QFont shownFont(const platform::TextField& field);

} // namespace kivo::device
