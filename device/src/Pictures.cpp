#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/device/Pictures.hpp>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
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
        if (!picture.save(QString::fromStdString(file.string()), "PNG")) {
            return std::unexpected{file.string() + " could not be written; is its folder there, with space left?"};
        }
        return {};
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
