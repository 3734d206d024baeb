#pragma once

#include <kivo/platform/ui/Image.hpp>

#include <QColor>
#include <QImage>

namespace kivo::device {

/// The decoded picture, kept for the next time; null when its file cannot be decoded.
QImage decoded(const platform::Image& image);

/// The picture's shape in one colour.
QImage tinted(const QImage& picture, const QColor& color);

} // namespace kivo::device
