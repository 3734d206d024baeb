#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <expected>
#include <string>

namespace kivo::device::app {

/// A new file for a picture in the person's folder for pictures, such as "kivo-20261126-143005.png".
QString newPictureFile();

/// Writes a file that only the person can read, or leaves the file as it was. The error is a sentence.
std::expected<void, std::string> keep(const QString& file, const QByteArray& bytes);

/// The bytes of a PNG file.
QByteArray asPng(const QImage& picture);

} // namespace kivo::device::app
