#include "DeviceFixture.hpp"

#include <kivo/device/TextContrast.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <gmock/gmock.h>

namespace kivo::test {
namespace {

using namespace platform;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

class Contrast : public DeviceFixture {
protected:
    Contrast() {
        label->setText("Some text");
        label->setTextColor(Color::black());
        label->setPlacement({.top = 100, .left = 20, .width = 300, .height = 40});
        screen->view()->setBackgroundColor(Color::white());
        window->setRootViewController(screen);
    }

    std::shared_ptr<View> addBox(const Color& color, const Placement& placement) const {
        auto box = std::make_shared<View>();
        box->setBackgroundColor(color);
        box->setPlacement(placement);
        screen->view()->addSubview(box);
        return box;
    }

    void expectContrast(double contrast, double least) const {
        EXPECT_THAT(device::textContrasts(*window),
                    ElementsAre(AllOf(Field(&device::TextContrast::contrast, DoubleNear(contrast, 0.1)),
                                      Field(&device::TextContrast::least, least))));
    }

    std::shared_ptr<ViewController> screen = std::make_shared<ViewController>();
    std::shared_ptr<Label> label = std::make_shared<Label>();
};

constexpr Placement everywhere{.top = 0, .left = 0, .bottom = 0, .right = 0};

TEST_F(Contrast, IsThatOfThePixelsBehindALabel) {
    addBox(Color::black(), {.top = 100, .left = 40, .width = 30, .height = 40});
    screen->view()->addSubview(label);
    expectContrast(1, 7); // where the letters run over the black box
    label->setTextColor(Color::white(0.5));
    label->setFont(Font::system(30));
    expectContrast(3.9, 4.5);
    label->setAlpha(0.5);
    expectContrast(1.8, 4.5);
    label->setPlacement({.top = -90, .left = 20, .width = 300, .height = 40});
    EXPECT_THAT(device::textContrasts(*window), IsEmpty()) << "out of sight";
}

TEST_F(Contrast, OfAnIdleTextNeedsNothing) {
    screen->view()->addSubview(label);
    const auto cover = addBox(Color::clear(), everywhere);
    expectContrast(21, 7); // a clear view takes the touches of a card, and leaves its text alone
    cover->setBackgroundColor(Color::white(0, 0.5));
    expectContrast(5.3, 0);
    cover->setBackgroundColor(Color::white());
    EXPECT_THAT(device::textContrasts(*window), IsEmpty());
    cover->removeFromSuperview();
    label->removeFromSuperview();
    const auto button = std::make_shared<Button>();
    button->setTitle("Go");
    button->setTextColor(Color::white(0.4));
    button->setPlacement({.top = 100, .left = 20, .width = 300, .height = 44});
    screen->view()->addSubview(button);
    expectContrast(5.7, 4.5);
    button->setEnabled(false);
    expectContrast(1.8, 0);
}

} // namespace
} // namespace kivo::test
