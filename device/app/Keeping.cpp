#include "Keeping.hpp"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

namespace kivo::device::app {

QString newPictureFile() {
    const auto folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    QDir{}.mkpath(folder);
    const auto name = folder + "/kivo-" + QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss");
    auto file = name + ".png";
    for (int i = 2; QFileInfo::exists(file); ++i) {
        file = name + "-" + QString::number(i) + ".png";
    }
    return file;
}

std::expected<void, std::string> keep(const QString& file, const QByteArray& bytes) {
    QSaveFile kept{file};
    // Unbuffered, because a commit does not tell that the buffer could not be written.
    const bool isWritten = kept.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                           kept.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
                           kept.write(bytes) == bytes.size() && kept.commit();
    if (!isWritten) {
        return std::unexpected{file.toStdString() + " could not be written (" + kept.errorString().toStdString() + ")"};
    }
    return {};
}

QByteArray asPng(const QImage& picture) {
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    picture.save(&bytes, "PNG");
    return bytes.data();
}

} // namespace kivo::device::app
