#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <gmock/gmock.h>

#include <QFontDatabase>
#include <QGlyphRun>
#include <QTextLayout>
#include <algorithm>
#include <vector>

namespace kivo::test {
namespace {

/// The markers of the log's levels, as the library's own log test has them, and other letters of the device.
TEST(ShownLog, EveryLetterIsInAnInstalledFont) {
    for (const char32_t letter : U"\u27A1\u2753\u2139\u26A0\u274C\u2013\u2022\u2026") {
        const auto text = QString::fromUcs4(&letter, letter == 0 ? 0 : 1);
        QTextLayout layout{text, QFontDatabase::systemFont(QFontDatabase::FixedFont)};
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        for (const auto& run : layout.glyphRuns()) {
            EXPECT_THAT(run.glyphIndexes(), testing::Each(testing::Ne(0U))) << text.toStdString();
        }
    }
}

/// The widths of the lines of letters in a picture, in pixels.
std::vector<int> widthsOfLines(const QImage& picture) {
    std::vector<int> widths;
    bool isInLine = false;
    int left = 0;
    int right = 0;
    for (int y = 0; y < picture.height(); ++y) {
        bool isEmpty = true;
        for (int x = 0; x < picture.width(); ++x) {
            if (qGray(picture.pixel(x, y)) < 128) {
                left = isInLine || !isEmpty ? std::min(left, x) : x;
                right = isInLine || !isEmpty ? std::max(right, x) : x;
                isEmpty = false;
            }
        }
        if (isInLine && isEmpty) {
            widths.push_back(right - left);
        }
        isInLine = !isEmpty;
    }
    return widths;
}

using Letters = DeviceFixture;

TEST_F(Letters, LinesOfAShortCentredTextHaveLikeLengths) {
    const struct {
        const char* text;
        platform::TextAlignment alignment;
        bool isEven;
    } rows[] = {
        {"Have some document at hand; a chip is read now", platform::TextAlignment::center, true},
        {"Have some document at hand; a chip is read now", platform::TextAlignment::left, false},
        {"認証コードを確認して、もう一度入力してください", platform::TextAlignment::center, true},
    };

    for (const auto& [text, alignment, isEven] : rows) {
        const auto label = std::make_shared<platform::Label>();
        label->setPlacement({.top = 100, .left = 10, .width = 340, .height = 100});
        label->setFont(platform::Font::system(17));
        label->setTextAlignment(alignment);
        label->setText(text);
        const auto screen = std::make_shared<platform::ViewController>();
        screen->view()->addSubview(label);
        window->setRootViewController(screen);
        const auto widths = widthsOfLines(device::PhoneView{window}.picture(1));
        ASSERT_EQ(widths.size(), 2U) << text;
        EXPECT_EQ(std::min(widths[0], widths[1]) > std::max(widths[0], widths[1]) * 0.7, isEven) << text;
    }
}

} // namespace
} // namespace kivo::test
