#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <algorithm>

namespace kivo::test {
namespace {

using TextDirection = DeviceFixture;

TEST_F(TextDirection, LinesStandWhereALineOfTheLanguageBegins) {
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
