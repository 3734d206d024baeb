#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/device/Pictures.hpp>

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <array>
#include <utility>

namespace kivo::device {
namespace {

/// Qt's application object, drawing into memory. Qt keeps references to the arguments.
class OffscreenApplication {
public:
    OffscreenApplication()
        : application_{count_, arguments_.data()} {}

private:
    std::array<char, 5> name_{"kivo"};
    std::array<char, 10> option_{"-platform"};
    std::array<char, 10> value_{"offscreen"};
    std::array<char*, 4> arguments_{name_.data(), option_.data(), value_.data(), nullptr};
    int count_ = 3;
    QGuiApplication application_;
};

/// Writes a whole picture, or leaves the file as it was.
std::expected<void, std::string> writePng(const QImage& picture, const std::filesystem::path& file) {
    QBuffer bytes;
    QSaveFile written{QString::fromStdString(file.string())};
    if (bytes.open(QIODevice::WriteOnly) && picture.save(&bytes, "PNG") && written.open(QIODevice::WriteOnly) &&
        written.write(bytes.data()) == bytes.size() && written.commit()) {
        return {};
    }
    return std::unexpected{file.string() + " could not be written (" + written.errorString().toStdString() + ")"};
}

class QtPictures final : public Pictures {
public:
    explicit QtPictures(std::unique_ptr<OffscreenApplication> application)
        : application_{std::move(application)} {}

    std::shared_ptr<platform::Fonts> fonts() override { return device::fonts(); }

    std::expected<void, std::string> save(platform::Window& window, const std::filesystem::path& file,
                                          double scale) override {
        window.layoutIfNeeded();
        const QSizeF size{window.frame().size.width, window.frame().size.height};
        QImage picture{(size * scale).toSize(), QImage::Format_RGB32};
        picture.setDevicePixelRatio(scale);
        picture.fill(Qt::white);
        QPainter painter{&picture};
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.setClipRect(QRectF{{}, size});
        drawTree(painter, window, {});
        painter.end();
        return writePng(picture, file);
    }

private:
    std::unique_ptr<OffscreenApplication> application_;
};

} // namespace

std::unique_ptr<Pictures> Pictures::open() {
    return std::make_unique<QtPictures>(
        QCoreApplication::instance() == nullptr ? std::make_unique<OffscreenApplication>() : nullptr);
}

} // namespace kivo::device

extern "C" KIVO_EXPORT kivo::device::Pictures* kivoDeviceOpenPictures() {
    return kivo::device::Pictures::open().release();
}
