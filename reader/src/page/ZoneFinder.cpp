#include "page/ZoneFinder.hpp"

#include "page/Leptonica.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <optional>

namespace kivo::reader {
namespace {

constexpr int sideForFinding = 960;
constexpr double heightOfLetters = 32;
constexpr std::size_t mostZones = 3;

// A turn about the middle of a picture.
class Turn {
public:
    Turn(const Shades& picture, double degrees)
        : cosine(std::cos(degrees * std::numbers::pi / 180))
        , sine(std::sin(degrees * std::numbers::pi / 180))
        , middleX(picture.width / 2.0)
        , middleY(picture.height / 2.0) {}

    // The place in the picture as it was of a place in the turned picture.
    std::pair<double, double> before(double x, double y) const {
        const double fromX = x - middleX;
        const double fromY = y - middleY;
        return {middleX + fromX * cosine + fromY * sine, middleY - fromX * sine + fromY * cosine};
    }

private:
    double cosine;
    double sine;
    double middleX;
    double middleY;
};

Shades turned(const Shades& picture, const Turn& turn) {
    Shades result{.width = picture.width, .height = picture.height};
    result.bytes.reserve(picture.bytes.size());
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const auto [fromX, fromY] = turn.before(x, y);
            result.bytes.push_back(static_cast<std::uint8_t>(std::lround(picture.between(fromX, fromY))));
        }
    }
    return result;
}

// One bit a pixel: where the picture is much darker than what lies around, whatever the light there.
PixPointer letterMask(const Shades& picture) {
    constexpr int widestStroke = 13;
    constexpr double shareOfStrokes = 0.005;
    constexpr int leastContrast = 50; // of 255
    const auto pix = pixOf(picture);
    const PixPointer smooth{pix ? pixBlockconv(pix.get(), 1, 1) : nullptr};
    const PixPointer ground{smooth ? pixCloseGray(smooth.get(), widestStroke, widestStroke) : nullptr};
    if (!ground) {
        return nullptr;
    }
    auto contrast = shadesOf(smooth.get());
    const auto light = shadesOf(ground.get());
    for (std::size_t i = 0; i < contrast.bytes.size(); ++i) {
        const int around = std::max<int>(light.bytes[i], 1);
        contrast.bytes[i] =
            static_cast<std::uint8_t>((around - std::min<int>(contrast.bytes[i], around)) * 255 / around);
    }
    const int strokes = shadeBelowWhich(contrast, 1 - shareOfStrokes);
    const auto map = pixOf(contrast);
    PixPointer mask{map ? pixThresholdToBinary(map.get(), std::max(leastContrast, strokes / 2)) : nullptr};
    if (mask) {
        pixInvert(mask.get(), mask.get());
    }
    return mask;
}

PixPointer partOf(Pix* mask, PartOfPage part) {
    if (part == PartOfPage::whole) {
        return PixPointer{pixClone(mask)};
    }
    const int height = pixGetHeight(mask) / 2;
    const std::unique_ptr<Box, BoxFree> box{
        boxCreate(0, part == PartOfPage::lower ? pixGetHeight(mask) - height : 0, pixGetWidth(mask), height)};
    return PixPointer{box ? pixClipRectangle(mask, box.get(), nullptr) : nullptr};
}

std::optional<double> skewOf(Pix* mask, PartOfPage part) {
    constexpr float most = 17;
    constexpr float step = 1;
    constexpr float least = 0.1F;
    float angle = 0;
    float confidence = 0;
    const auto letters = partOf(mask, part);
    if (!letters || pixFindSkewSweepAndSearch(letters.get(), &angle, &confidence, 2, 1, most, step, least) != 0) {
        return std::nullopt;
    }
    return angle;
}

struct Line {
    double left;
    double top;
    double width;
    double height;

    double right() const { return left + width; }

    double middle() const { return top + height / 2; }
};

// Lines of text: letters side by side run together, and what is not much longer than high goes.
std::vector<Line> linesIn(Pix* mask) {
    constexpr int widestGap = 17;
    constexpr int thinnest = 4;
    constexpr int shortest = 15;
    constexpr double longerThanHigh = 8;
    const PixPointer closed{pixCloseSafeBrick(nullptr, mask, widestGap, 1)};
    const PixPointer bars{closed ? pixOpenBrick(nullptr, closed.get(), shortest, thinnest) : nullptr};
    const Boxes boxes{bars ? pixConnCompBB(bars.get(), 8) : nullptr};
    std::vector<Line> pieces;
    for (int i = 0; boxes && i < boxaGetCount(boxes.get()); ++i) {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        boxaGetBoxGeometry(boxes.get(), i, &x, &y, &width, &height);
        pieces.push_back({.left = double(x), .top = double(y), .width = double(width), .height = double(height)});
    }
    std::ranges::sort(pieces, {}, &Line::left);
    std::vector<Line> lines;
    for (const auto& piece : pieces) {
        const auto before = std::ranges::find_if(lines, [&](const Line& line) {
            const double height = std::max(line.height, piece.height);
            return std::min(line.height, piece.height) > 0.5 * height && piece.width > 1.5 * height &&
                   std::abs(line.middle() - piece.middle()) < 0.5 * height && piece.left - line.right() < 2 * height;
        });
        if (before == lines.end()) {
            lines.push_back(piece);
            continue;
        }
        const double bottom = std::max(before->top + before->height, piece.top + piece.height);
        before->width = std::max(before->right(), piece.right()) - before->left;
        before->top = std::min(before->top, piece.top);
        before->height = bottom - before->top;
    }
    const double shortestLine = 0.28 * pixGetWidth(mask);
    std::erase_if(lines, [&](const Line& line) {
        return line.width < shortestLine || line.width < longerThanHigh * line.height;
    });
    std::ranges::sort(lines, {}, &Line::top);
    return lines;
}

bool areNeighbours(const Line& upper, const Line& lower) {
    constexpr double nearest = 0.04;
    constexpr double farthest = 0.11;
    const double width = std::max(upper.width, lower.width);
    const double distance = lower.middle() - upper.middle();
    return std::abs(upper.left - lower.left) < 0.09 * width && std::abs(upper.right() - lower.right()) < 0.09 * width &&
           distance > nearest * width && distance < farthest * width;
}

// Two or three lines; the longest first, because a zone is the longest text on a page.
std::vector<std::vector<Line>> groupsOf(const std::vector<Line>& lines) {
    std::vector<std::vector<Line>> groups;
    for (auto lower = lines.rbegin(); lower != lines.rend(); ++lower) {
        std::vector<Line> group{*lower};
        for (auto upper = std::next(lower); upper != lines.rend() && group.size() < 3; ++upper) {
            if (areNeighbours(*upper, group.front())) {
                group.insert(group.begin(), *upper);
            }
        }
        if (group.size() > 1) {
            groups.push_back(group);
        }
    }
    const auto length = [](const std::vector<Line>& group) { return group.front().width + group.back().width; };
    std::ranges::stable_sort(groups, std::ranges::greater{}, length);
    groups.resize(std::min(groups.size(), mostZones));
    return groups;
}

// The middle of the letters from the left to the right, as a straight line: what is left of the skew in the line.
struct Course {
    double atLeft;
    double slope;
    double height;
};

Course courseOf(Pix* mask, const Line& line) {
    const auto top = std::max(0, static_cast<int>(line.top) - 2);
    const auto bottom = std::min(pixGetHeight(mask), static_cast<int>(line.top + line.height) + 2);
    double count = 0;
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    for (int x = static_cast<int>(line.left); x < static_cast<int>(line.right()); ++x) {
        for (int y = top; y < bottom; ++y) {
            l_uint32 isLetter = 0;
            pixGetPixel(mask, x, y, &isLetter);
            if (isLetter != 0) {
                const double fromLeft = x - line.left;
                ++count;
                sumX += fromLeft;
                sumY += y;
                sumXX += fromLeft * fromLeft;
                sumXY += fromLeft * y;
            }
        }
    }
    const double spread = count * sumXX - sumX * sumX;
    const double slope = spread > 0 ? (count * sumXY - sumX * sumY) / spread : 0;
    const double atLeft = count > 0 ? (sumY - slope * sumX) / count : line.middle();
    return {.atLeft = atLeft, .slope = slope, .height = std::max(4.0, line.height - std::abs(slope) * line.width)};
}

Shades stripOf(const Shades& picture, const Turn& turn, double scale, const Line& line, const Course& course) {
    const double step = course.height / heightOfLetters; // in pixels of the picture for finding
    const double margin = course.height;
    Shades strip{.width = std::clamp(static_cast<int>((line.width + 2 * margin) / step), 1, 4000),
                 .height = static_cast<int>(heightOfLetters * 2)};
    strip.bytes.reserve(static_cast<std::size_t>(strip.width) * static_cast<std::size_t>(strip.height));
    for (int y = 0; y < strip.height; ++y) {
        for (int x = 0; x < strip.width; ++x) {
            const double fromLeft = x * step - margin;
            const double across = line.left + fromLeft;
            const double down = course.atLeft + course.slope * fromLeft + (y - strip.height / 2.0) * step;
            const auto [fromX, fromY] = turn.before(across, down);
            strip.bytes.push_back(
                static_cast<std::uint8_t>(std::lround(picture.between(fromX * scale, fromY * scale))));
        }
    }
    return strip;
}

} // namespace

std::vector<LineStrips> possibleZones(const Shades& picture, PartOfPage part) {
    const auto small = reduced(picture, sideForFinding);
    const double scale = double(picture.width) / small.width;
    const auto mask = letterMask(small);
    const auto skew = mask ? skewOf(mask.get(), part) : std::nullopt;
    if (!skew) {
        return {};
    }
    const Turn turn{small, *skew};
    const auto upright = turned(small, turn);
    const auto uprightMask = letterMask(upright);
    std::vector<LineStrips> zones;
    if (uprightMask) {
        for (const auto& group : groupsOf(linesIn(uprightMask.get()))) {
            LineStrips strips;
            for (const auto& line : group) {
                strips.push_back(stripOf(picture, turn, scale, line, courseOf(uprightMask.get(), line)));
            }
            zones.push_back(std::move(strips));
        }
    }
    return zones;
}

} // namespace kivo::reader
