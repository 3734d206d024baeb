#include "AnimatedPng.hpp"

#include <QBuffer>
#include <QPainter>
#include <QtEndian>
#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>

namespace kivo::device::app {
namespace {

const QByteArray signature{"\x89PNG\r\n\x1a\n"};
constexpr qsizetype chunkRoom = 12; // length, name and check sum around a chunk's data
constexpr auto pictureFormat = QImage::Format_RGB888;

/// The table of the cyclic redundancy check that ends every chunk (PNG, annex D).
constexpr auto remainders = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        auto value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1U) != 0 ? 0xEDB88320U ^ (value >> 1U) : value >> 1U;
        }
        table[i] = value;
    }
    return table;
}();

void append(QByteArray& bytes, std::uint32_t number) {
    const auto ordered = qToBigEndian(number);
    bytes.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
}

void append(QByteArray& bytes, std::uint16_t number) {
    const auto ordered = qToBigEndian(number);
    bytes.append(reinterpret_cast<const char*>(&ordered), sizeof ordered);
}

std::uint32_t numberAt(const QByteArray& bytes, qsizetype place) {
    return qFromBigEndian<std::uint32_t>(bytes.constData() + place);
}

QByteArray chunk(const char* name, const QByteArray& data) {
    const auto named = name + data;
    auto check = std::numeric_limits<std::uint32_t>::max();
    for (const auto byte : named) {
        check = remainders[(check ^ static_cast<std::uint8_t>(byte)) & 0xFFU] ^ (check >> 8U);
    }
    QByteArray whole;
    append(whole, static_cast<std::uint32_t>(data.size()));
    whole += named;
    append(whole, ~check);
    return whole;
}

/// Calls `visit` with the name and the data of each chunk. Returns whether the file is a whole PNG file.
bool eachChunk(const QByteArray& file, const std::function<void(const QByteArray&, const QByteArray&)>& visit) {
    if (!file.startsWith(signature)) {
        return false;
    }
    auto place = signature.size();
    while (file.size() - place >= chunkRoom) {
        const qsizetype length = numberAt(file, place);
        const auto name = file.mid(place + 4, 4);
        visit(name, file.mid(place + 8, length));
        place += chunkRoom + length;
        if (name == "IEND") {
            return true;
        }
    }
    return false;
}

/// The header and the compressed pixels of a picture.
std::pair<QByteArray, QByteArray> compressed(const QImage& picture, int compression) {
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    // Qt counts quality, which is the contrary of compression, up to 100.
    picture.save(&file, "PNG", (9 - compression) * 100 / 9);
    QByteArray header;
    QByteArray pixels;
    eachChunk(file.data(), [&](const QByteArray& name, const QByteArray& data) {
        if (name == "IHDR") {
            header = data;
        } else if (name == "IDAT") {
            pixels += data;
        }
    });
    return {header, pixels};
}

/// The smallest rectangle outside of which both pictures, of the same size, are alike.
QRect changedPart(const QImage& before, const QImage& after) {
    constexpr int bytesOfPixel = 3;
    QRect changed;
    for (int y = 0; y < after.height(); ++y) {
        const auto* const one = before.constScanLine(y);
        const auto* const other = after.constScanLine(y);
        const auto* const end = one + qsizetype{bytesOfPixel} * after.width();
        const auto first = std::mismatch(one, end, other).first - one;
        if (first == end - one) {
            continue;
        }
        auto last = end - one - 1;
        while (one[last] == other[last]) {
            --last;
        }
        const auto left = static_cast<int>(first / bytesOfPixel);
        changed |= QRect{left, y, static_cast<int>(last / bytesOfPixel) - left + 1, 1};
    }
    return changed;
}

/// The picture in the format of the file, and of that size.
QImage fitting(const QImage& picture, QSize size) {
    if (size.isEmpty() || picture.size() == size) {
        auto same = picture.convertToFormat(pictureFormat);
        same.setDevicePixelRatio(1);
        return same;
    }
    auto plain = picture;
    plain.setDevicePixelRatio(1);
    QImage ground{size, pictureFormat};
    ground.fill(Qt::black);
    QPainter{&ground}.drawImage(0, 0, plain);
    return ground;
}

QByteArray frameControl(std::uint32_t number, const QRect& place, std::chrono::milliseconds duration) {
    constexpr std::chrono::milliseconds longest{std::numeric_limits<std::uint16_t>::max()};
    QByteArray data;
    append(data, number);
    for (const auto each : {place.width(), place.height(), place.x(), place.y()}) {
        append(data, static_cast<std::uint32_t>(each));
    }
    append(data, static_cast<std::uint16_t>(std::min(duration, longest).count()));
    append(data, std::uint16_t{1000}); // the durations are in milliseconds
    data.append(2, '\0');              // the frame stays, and the next one lies on it
    return chunk("fcTL", data);
}

} // namespace

void AnimatedPng::add(const QImage& frame, std::chrono::milliseconds duration) {
    const auto picture = fitting(frame, last_.size());
    const auto place = frames_.empty() ? picture.rect() : changedPart(last_, picture);
    if (place.isEmpty()) {
        prolong(duration);
        return;
    }
    auto [header, pixels] = compressed(picture.copy(place), compression_);
    if (frames_.empty()) {
        header_ = header;
    }
    size_ += pixels.size() + chunkRoom * 4;
    frames_.push_back({.place = place, .duration = duration, .pixels = std::move(pixels)});
    last_ = picture;
}

void AnimatedPng::prolong(std::chrono::milliseconds duration) {
    if (!frames_.empty()) {
        frames_.back().duration += duration;
    }
}

QByteArray AnimatedPng::file() const {
    QByteArray control;
    append(control, static_cast<std::uint32_t>(frames_.size()));
    append(control, std::uint32_t{0}); // again and again
    auto whole = signature + chunk("IHDR", header_) + chunk("acTL", control);
    std::uint32_t number = 0;
    for (const auto& [place, duration, pixels] : frames_) {
        const bool isFirst = number == 0;
        whole += frameControl(number++, place, duration);
        if (isFirst) {
            whole += chunk("IDAT", pixels);
        } else {
            QByteArray numbered;
            append(numbered, number++);
            whole += chunk("fdAT", numbered + pixels);
        }
    }
    return whole + chunk("IEND", {});
}

std::expected<std::vector<QImage>, std::string> framesOf(const QByteArray& file, std::size_t most) {
    constexpr qsizetype controlSize = 26;
    std::vector<QImage> frames;
    const auto first = QImage::fromData(file, "PNG");
    if (first.isNull()) {
        return std::unexpected{"no picture in PNG"};
    }
    QByteArray header;
    QByteArray pixels;
    QByteArray control;
    std::string problem;
    const auto finish = [&] {
        if (control.isEmpty() || pixels.isEmpty() || !problem.empty()) {
            return;
        }
        const auto number = [&](qsizetype place) { return static_cast<int>(numberAt(control, place)); };
        auto own = header;
        own.replace(0, 8, control.mid(4, 8));
        const auto part = QImage::fromData(signature + chunk("IHDR", own) + chunk("IDAT", pixels) + chunk("IEND", {}));
        auto whole = frames.empty() ? first : frames.back();
        if (part.isNull() || frames.size() >= most) {
            problem = part.isNull() ? "a frame that cannot be read" : "too many frames";
            return;
        }
        whole = whole.convertToFormat(pictureFormat);
        QPainter{&whole}.drawImage(number(12), number(16), part);
        frames.push_back(whole);
        pixels.clear();
    };
    const bool isWhole = eachChunk(file, [&](const QByteArray& name, const QByteArray& data) {
        if (name == "IHDR") {
            header = data;
        } else if (name == "fcTL") {
            finish();
            control = data;
            problem = data.size() == controlSize ? problem : "a malformed frame";
        } else if (name == "IDAT") {
            pixels += data;
        } else if (name == "fdAT") {
            pixels += data.mid(4);
        }
    });
    finish();
    if (!isWhole || !problem.empty()) {
        return std::unexpected{problem.empty() ? "a file that is cut off" : problem};
    }
    if (frames.empty()) {
        frames.push_back(first);
    }
    return frames;
}

} // namespace kivo::device::app
