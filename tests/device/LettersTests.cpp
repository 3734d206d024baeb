#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <gmock/gmock.h>

#include <QFontDatabase>
#include <QGlyphRun>
#include <QTextLayout>
#include <algorithm>

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

using Letters = DeviceFixture;

TEST_F(Letters, StandWhereALineOfTheLanguageBegins) {
    const auto screen = std::make_shared<platform::ViewController>();
    const auto label = std::make_shared<platform::Label>();
    label->setPlacement({.top = 0, .left = 0, .width = 296, .height = 40, .ignoresSafeArea = true});
    screen->view()->addSubview(label);
    window->setRootViewController(screen);
    device::PhoneView phone{window};
    phone.setAnimated(false);
    phone.show();
    mainLoop->drain();
    /// Whether ink is in that half of the label.
    const auto hasInk = [&](int half) {
        const auto part =
            phone.grab(QRect{148 * half, 0, 148, 40}).toImage().convertToFormat(QImage::Format_Grayscale8);
        const auto* const pixels = part.constBits();
        return std::any_of(pixels, pixels + part.sizeInBytes(), [](uchar level) { return level < 128; });
    };
    for (const auto* text : {"\u0645\u0631\u062D\u0628\u0627", "ERIKSSON"}) {
        label->setText(text);
        for (const auto direction : {platform::LayoutDirection::rightToLeft, platform::LayoutDirection::leftToRight}) {
            const int near = direction == platform::LayoutDirection::rightToLeft ? 1 : 0;
            window->setLayoutDirection(direction);
            phone.synchronize();
            EXPECT_TRUE(hasInk(near)) << text;
            EXPECT_FALSE(hasInk(1 - near)) << text;
        }
    }
}

} // namespace
} // namespace kivo::test
