#include "Drawing.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/device/Pictures.hpp>

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
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

/// A full disk takes a part of the bytes; the next write says why.
bool writeAll(QSaveFile& file, const QByteArray& bytes) {
    qint64 done = 0;
    while (done < bytes.size()) {
        const auto count = file.write(bytes.data() + done, bytes.size() - done);
        if (count <= 0) {
            return false;
        }
        done += count;
    }
    return true;
}

/// Writes a whole picture, or leaves the file as it was.
std::expected<void, std::string> writePng(const QImage& picture, const std::filesystem::path& file) {
    QBuffer bytes;
    QSaveFile written{QString::fromStdString(file.string())};
    // Unbuffered, because a commit does not tell that the buffer could not be written.
    if (bytes.open(QIODevice::WriteOnly) && picture.save(&bytes, "PNG") &&
        written.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(written, bytes.data()) &&
        written.commit()) {
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
        return writePng(pictureOf(window, scale, {}), file);
    }

    std::vector<TextContrast> contrasts(platform::Window& window) override { return textContrasts(window); }

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
