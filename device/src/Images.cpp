#include "Images.hpp"

#include <QHash>
#include <QPainter>
#include <QString>

namespace kivo::device {

QImage decoded(const platform::Image& image) {
    static QHash<QString, QImage> pictures;
    const auto file = QString::fromStdString(image.file.string());
    const auto known = pictures.constFind(file);
    return known != pictures.constEnd() ? *known : *pictures.insert(file, QImage{file});
}

QImage tinted(const QImage& picture, const QColor& color) {
    auto result = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter{&result};
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(result.rect(), color);
    return result;
}

} // namespace kivo::device
