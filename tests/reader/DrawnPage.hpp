#pragma once

#include <kivo/platform/VideoFrame.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kivo::test {

/// How a camera sees a page.
struct View {
    int width = 1280;
    int height = 720;
    /// The width of the page, as a share of the picture's.
    double size = 0.85;
    /// In degrees, to the right.
    double rotation = 0;
    /// How much shorter the far edge of the page is than the near one, as a share; to the side and to the top.
    double slantToSide = 0;
    double slantToTop = 0;
    /// The standard deviations of the blur in pixels and of the noise in 256 steps of brightness.
    double blur = 0.6;
    double noise = 3;
    /// Brightness and contrast: 1 is a page in good light.
    double light = 1;
    /// How much darker one edge of the picture is than the other, as a share.
    double shadow = 0.1;
    /// Whether the strokes of the letters end squarely.
    bool hasSharpLetters = false;
    unsigned seed = 1;
};

/// Draws the data pages of passports and cards with their machine-readable lines in the letters of the standard
/// (OCR-B).
class DrawnPages {
public:
    /// Throws where the typeface is not installed.
    DrawnPages();
    ~DrawnPages();

    /// A page with these lines, as a camera gives it: in shades of gray.
    platform::VideoFrame frame(const std::vector<std::string>& lines, const View& view) const;

private:
    struct Letters;
    std::unique_ptr<Letters> letters;
};

} // namespace kivo::test
