#include "Compare.hpp"

#include "app/AnimatedPng.hpp"

#include <QFile>
#include <QString>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <expected>
#include <set>

namespace kivo::device::pictures {
namespace {

constexpr std::uintmax_t largestFile = 16U << 20U;

/// The mean of a channel over two by two pixels may differ by this much, for other rounding at the edges of letters.
constexpr int tolerance = 40;

/// The part of the picture that may differ by more.
constexpr double tolerated = 0.0005;

using Frames = std::expected<std::vector<QImage>, std::string>;

Frames read(const std::filesystem::path& path) {
    std::error_code error;
    if (const auto size = file_size(path, error); error || size > largestFile) {
        return std::unexpected{error ? error.message() : "a file larger than 16 MB"};
    }
    QFile file{QString::fromStdString(path.string())};
    if (!file.open(QIODevice::ReadOnly)) {
        return std::unexpected{file.errorString().toStdString()};
    }
    return app::framesOf(file.readAll());
}

/// The part of the pixels, from 0 to 1, that differ by more than the tolerance.
double differingPart(const QImage& one, const QImage& other) {
    const auto coarse = [](const QImage& picture) {
        return picture
            .scaled(std::max(picture.width() / 2, 1), std::max(picture.height() / 2, 1), Qt::IgnoreAspectRatio,
                    Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_ARGB32);
    };
    const auto a = coarse(one);
    const auto b = coarse(other);
    qsizetype differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const auto [p, q] = std::pair{a.pixel(x, y), b.pixel(x, y)};
            // Transparent pixels look the same whatever their colours are.
            const auto differs = [&](int m, int n) {
                return std::abs(m * qAlpha(p) - n * qAlpha(q)) / 255 > tolerance;
            };
            const bool isOther = differs(qRed(p), qRed(q)) || differs(qGreen(p), qGreen(q)) ||
                                 differs(qBlue(p), qBlue(q)) || std::abs(qAlpha(p) - qAlpha(q)) > tolerance;
            differing += isOther ? 1 : 0;
        }
    }
    return static_cast<double>(differing) / static_cast<double>(a.width() * qsizetype{a.height()});
}

std::string sizeText(const QImage& picture) {
    return std::to_string(picture.width()) + " x " + std::to_string(picture.height());
}

std::string difference(const Frames& committed, const Frames& drawn) {
    if (!committed || !drawn) {
        return "cannot be read: " + (committed ? drawn : committed).error();
    }
    if (committed->size() != drawn->size()) {
        return "has " + std::to_string(committed->size()) + " frames, and now " + std::to_string(drawn->size());
    }
    for (std::size_t i = 0; i < drawn->size(); ++i) {
        const auto& one = (*committed)[i];
        const auto& other = (*drawn)[i];
        if (one.size() != other.size()) {
            return "has " + sizeText(one) + " pixels, and now " + sizeText(other);
        }
        if (const auto part = differingPart(one, other); part > tolerated) {
            return "differs in " + QString::number(part * 100, 'f', 2).toStdString() + " % of its pixels" +
                   (drawn->size() > 1 ? ", in frame " + std::to_string(i + 1) : "");
        }
    }
    return "";
}

std::set<std::string> picturesOf(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& each : std::filesystem::directory_iterator{folder}) {
        if (each.path().extension() == ".png") {
            names.insert(each.path().filename().string());
        }
    }
    return names;
}

} // namespace

std::vector<std::string> differences(const std::filesystem::path& committed, const std::filesystem::path& drawn) {
    std::vector<std::string> found;
    const auto [kept, made] = std::pair{picturesOf(committed), picturesOf(drawn)};
    auto all = kept;
    all.insert(made.begin(), made.end());
    for (const auto& name : all) {
        const auto problem = !made.contains(name)   ? "is no longer drawn"
                             : !kept.contains(name) ? "is not committed"
                                                    : difference(read(committed / name), read(drawn / name));
        if (!problem.empty()) {
            found.push_back((committed / name).string() + " " + problem);
        }
    }
    return found;
}

} // namespace kivo::device::pictures
