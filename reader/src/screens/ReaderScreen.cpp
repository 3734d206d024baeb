#include "screens/ReaderScreen.hpp"

#include <utility>

namespace kivo::reader {
namespace {

constexpr double barHeight = 44;
/// With the margin inside of a button, the titles stand above the edges of the page.
constexpr double barMargin = 8;

} // namespace

std::shared_ptr<platform::View> ReaderScreen::loadView() {
    const auto toPageBefore = barButton("readerBack", "Back", &ReaderScreen::back);
    toPageBefore->setPlacement({.top = 0, .leading = barMargin, .height = barHeight});
    const auto toHost = barButton("readerClose", "Cancel", &ReaderScreen::close);
    toHost->setPlacement({.top = 0, .trailing = barMargin, .height = barHeight});
    scroll_->setPlacement({.top = barHeight, .left = 0, .bottom = 0, .right = 0});
    auto view = std::make_shared<platform::View>();
    view->setBackgroundColor(look_.colors().background);
    view->addSubview(toPageBefore);
    view->addSubview(toHost);
    view->addSubview(scroll_);
    return view;
}

std::shared_ptr<platform::Button> ReaderScreen::barButton(std::string_view identifier, ScreenText title,
                                                          std::function<void()> ReaderScreen::* action) {
    auto button = std::make_shared<platform::Button>();
    button->setIdentifier(std::string{identifier});
    button->setTitle(look_.text(title));
    button->setTextColor(look_.colors().accent);
    button->addAction(platform::ControlEvent::touchUpInside, [this, action](const auto&) {
        if (const auto called = this->*action) {
            called();
        }
    });
    return button;
}

void ReaderScreen::show(const Page& page) {
    view()->endEditing();
    const auto former = scroll_->subviews();
    for (const auto& each : former) {
        each->removeFromSuperview();
    }
    scroll_->setContentOffset(0);
    scroll_->addSubview(page.column());
}

void ReaderScreen::viewDidDisappear(bool /*animated*/) {
    if (!presentingViewController() && gone) {
        std::exchange(gone, nullptr)();
    }
}

} // namespace kivo::reader
