#include "reader/DrawnPage.hpp"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <stdexcept>

namespace kivo::test {
namespace {

constexpr double dotsPerMillimetre = 14;
constexpr std::string_view folder = "/usr/share/fonts/opentype/ocr-b/";

/// Brightness from 0 to 255.
struct Raster {
    Raster(int columns, int rows, float value)
        : width(columns)
        , height(rows)
        , values(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), value) {}

    float& at(int x, int y) {
        return values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }

    float at(int x, int y) const { return const_cast<Raster&>(*this).at(x, y); }

    float between(double x, double y, float outside) const {
        const auto left = static_cast<int>(std::floor(x));
        const auto top = static_cast<int>(std::floor(y));
        if (left < 0 || top < 0 || left + 1 >= width || top + 1 >= height) {
            return outside;
        }
        const auto right = static_cast<float>(x - left);
        const auto down = static_cast<float>(y - top);
        return std::lerp(std::lerp(at(left, top), at(left + 1, top), right),
                         std::lerp(at(left, top + 1), at(left + 1, top + 1), right), down);
    }

    int width;
    int height;
    std::vector<float> values;
};

int dots(double millimetres) {
    return static_cast<int>(std::lround(millimetres * dotsPerMillimetre));
}

void blur(Raster& raster, double deviation) {
    if (deviation < 0.05) {
        return;
    }
    const int reach = static_cast<int>(std::ceil(deviation * 3));
    std::vector<float> weights;
    float sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        weights.push_back(static_cast<float>(std::exp(-i * i / (2 * deviation * deviation))));
        sum += weights.back();
    }
    for (const bool isAcross : {true, false}) {
        const auto former = raster;
        for (int y = 0; y < raster.height; ++y) {
            for (int x = 0; x < raster.width; ++x) {
                float value = 0;
                for (int i = -reach; i <= reach; ++i) {
                    const int fromX = isAcross ? std::clamp(x + i, 0, raster.width - 1) : x;
                    const int fromY = isAcross ? y : std::clamp(y + i, 0, raster.height - 1);
                    const int weight = i + reach;
                    value += weights[static_cast<std::size_t>(weight)] * former.at(fromX, fromY);
                }
                raster.at(x, y) = value / sum;
            }
        }
    }
}

// The map from a unit square onto a quadrangle, by its inverse: from a point of the picture to a point of the page.
class Projection {
public:
    explicit Projection(const View& view, double aspect) {
        // The page lies in its own plane, is tilted away, and is seen from above its middle.
        const double angle = view.rotation * std::numbers::pi / 180;
        a = std::cos(angle);
        b = std::sin(angle);
        scale = view.size * view.width;
        toSide = view.slantToSide;
        toTop = view.slantToTop;
        middleX = view.width / 2.0;
        middleY = view.height / 2.0;
        heightOfPage = aspect;
    }

    // Both from 0 to 1 on the page.
    std::pair<double, double> pagePoint(double x, double y) const {
        const double fromX = (x - middleX) / scale;
        const double fromY = (y - middleY) / scale;
        const double u = a * fromX + b * fromY;
        const double v = -b * fromX + a * fromY;
        // u = U / (1 + s U + t V), and the same for v, solved for U and V.
        const double depth = 1 - toSide * u - toTop * v;
        return {u / depth + 0.5, v / depth / heightOfPage + 0.5};
    }

private:
    double a;
    double b;
    double scale;
    double toSide;
    double toTop;
    double middleX;
    double middleY;
    double heightOfPage;
};

} // namespace

struct DrawnPages::Letters {
    FT_Library library = nullptr;
    FT_Face round = nullptr;
    FT_Face sharp = nullptr;

    Letters() {
        const auto open = [this](std::string_view name, FT_Face& face) {
            return FT_New_Face(library, (std::string{folder} + std::string{name}).c_str(), 0, &face) == 0;
        };
        if (FT_Init_FreeType(&library) != 0 || !open("OCRB.otf", round) || !open("OCRBS.otf", sharp)) {
            throw std::runtime_error{"the typeface OCR-B is not installed"};
        }
    }

    Letters(const Letters&) = delete;
    Letters& operator=(const Letters&) = delete;

    ~Letters() {
        FT_Done_Face(round);
        FT_Done_Face(sharp);
        FT_Done_FreeType(library);
    }

    // Draws with the left end of the base line at this place.
    void draw(Raster& raster, std::string_view text, double x, double y, double pitch, float ink,
              bool isSharp = false) const {
        auto* const face = isSharp ? sharp : round;
        const double size = pitch / 0.722;
        FT_Set_Pixel_Sizes(face, 0, static_cast<unsigned>(dots(size)));
        for (const char letter : text) {
            if (FT_Load_Char(face, static_cast<unsigned char>(letter), FT_LOAD_RENDER) == 0) {
                const auto& glyph = *face->glyph;
                for (unsigned row = 0; row < glyph.bitmap.rows; ++row) {
                    for (unsigned column = 0; column < glyph.bitmap.width; ++column) {
                        const int toX = dots(x) + glyph.bitmap_left + static_cast<int>(column);
                        const int toY = dots(y) - glyph.bitmap_top + static_cast<int>(row);
                        if (toX >= 0 && toY >= 0 && toX < raster.width && toY < raster.height) {
                            const auto covered =
                                static_cast<float>(
                                    glyph.bitmap.buffer[row * static_cast<unsigned>(glyph.bitmap.pitch) + column]) /
                                255;
                            raster.at(toX, toY) = std::lerp(raster.at(toX, toY), ink, covered);
                        }
                    }
                }
            }
            x += pitch;
        }
    }
};

DrawnPages::DrawnPages()
    : letters(std::make_unique<Letters>()) {}

DrawnPages::~DrawnPages() = default;

platform::VideoFrame DrawnPages::frame(const std::vector<std::string>& lines, const View& view) const {
    // TD3, TD2 and TD1, in millimetres.
    const bool isCard = lines.size() == 3;
    const bool isPassport = !isCard && lines[0].size() == 44;
    const double width = isPassport ? 125 : isCard ? 85.6 : 105;
    const double height = isPassport ? 88 : isCard ? 54 : 74;
    std::mt19937 random{view.seed};
    const auto uniform = [&](double least, double most) {
        return std::uniform_real_distribution<double>{least, most}(random);
    };
    Raster page{dots(width), dots(height), 225};
    const double wave = uniform(3, 6);
    for (int y = 0; y < page.height; ++y) { // a pattern as on security paper
        for (int x = 0; x < page.width; ++x) {
            const double lines1 = std::sin((y + 30 * std::sin(x / dotsPerMillimetre / wave)) / 5.0);
            const double lines2 = std::sin((x * 0.6 + y + 40 * std::cos(y / dotsPerMillimetre / 7)) / 7.0);
            page.at(x, y) += static_cast<float>(8 * lines1 + 7 * lines2);
        }
    }
    const double photoTop = isCard ? 12 : 16;
    const double photoHeight = isCard ? 18 : 34;
    for (int y = dots(photoTop); y < dots(photoTop + photoHeight); ++y) { // a person
        for (int x = dots(5); x < dots(5 + photoHeight * 0.78); ++x) {
            const double fromX = (x / dotsPerMillimetre - 5) / photoHeight - 0.39;
            const double fromY = (y / dotsPerMillimetre - photoTop) / photoHeight;
            const bool isFace = std::hypot(fromX / 0.22, (fromY - 0.45) / 0.3) < 1;
            const bool isBody = fromY > 0.72 && std::abs(fromX) < 0.34;
            page.at(x, y) = isFace ? 165.F : isBody ? 70.F : 200.F;
        }
    }
    const double textLeft = 5 + photoHeight * 0.78 + 5;
    letters->draw(page, "UTOPIA / PASSPORT", textLeft, isCard ? 9 : 12, 2.2, 60);
    for (int i = 0; i < (isCard ? 4 : 7); ++i) {
        std::string words;
        for (int letter = 0; letter < 18; ++letter) {
            words += static_cast<char>('A' + static_cast<int>(uniform(0, 25.9)));
        }
        letters->draw(page, words, textLeft, photoTop + 3 + i * (isCard ? 4.4 : 5.0), 1.5, 80);
    }
    const double lineHeight = 6.35;
    const auto count = static_cast<double>(lines.size());
    // The last base line stands 6.4 mm above the edge, or less on cards.
    const double last = height - (isCard ? 4.5 : 6.8);
    const double left = (width - static_cast<double>(lines[0].size()) * 2.54) / 2;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        letters->draw(page, lines[i], left,
                      last - (count - 1 - static_cast<double>(i)) * lineHeight * (isCard ? 0.95 : 1), 2.54, 35);
    }

    const Projection projection{view, height / width};
    // Each pixel of the camera sees several dots of the page.
    const double ratio = page.width / (view.size * view.width);
    blur(page, std::max(0.0, ratio * 0.35));
    Raster seen{view.width, view.height, 0};
    const double grain = uniform(20, 60);
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            const auto [u, v] = projection.pagePoint(x, y);
            const auto table =
                static_cast<float>(95 + 15 * std::sin(x / grain + 3 * std::sin(y / 90.0)) + 10 * std::sin(y / 7.0));
            seen.at(x, y) = page.between(u * page.width, v * page.height, table);
        }
    }
    blur(seen, view.blur);
    platform::VideoFrame frame{
        .width = view.width, .height = view.height, .format = platform::VideoFrame::Format::gray, .bytes = {}};
    std::normal_distribution<float> noise{0, static_cast<float>(std::max(view.noise, 0.001))};
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            const auto shade = static_cast<float>(view.light * (1 - view.shadow * x / view.width));
            const float value = seen.at(x, y) * shade + noise(random);
            frame.bytes.push_back(static_cast<std::uint8_t>(std::clamp(value, 0.F, 255.F)));
        }
    }
    return frame;
}

} // namespace kivo::test
