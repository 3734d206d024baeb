#include "HomeScreen.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <utility>

namespace kivo::device::app {

using platform::Color;

void HomeScreen::setTitle(const std::string& title) {
    navigationItem()->setTitle(title);
}

void HomeScreen::add(const std::string& identifier, const std::string& title, std::function<void()> action) {
    const auto button = std::make_shared<platform::Button>();
    button->setIdentifier(identifier);
    button->setTitle(title);
    button->setTextColor(Color::systemBlue());
    button->setBackgroundColor(Color::white());
    button->changeLayer([](platform::Layer& layer) { layer.cornerRadius = 10; });
    button->setPlacement({.minimumHeight = 46});
    button->addAction(platform::ControlEvent::touchUpInside, [action = std::move(action)](const auto&) { action(); });
    list_->addSubview(button);
}

void HomeScreen::say(const std::string& text) {
    outcome_->setText(text);
}

std::shared_ptr<platform::View> HomeScreen::loadView() {
    outcome_->setIdentifier("outcome");
    outcome_->setFont(platform::FontMetrics::scaledFont(platform::Font::system(17)));
    outcome_->setAdjustsFontForContentSizeCategory(true);
    outcome_->setTextAlignment(platform::TextAlignment::center);
    list_->setPlacement({.top = 0, .left = 20, .right = 20});
    list_->setMargins({.top = 16, .left = 0, .bottom = 24, .right = 0});
    list_->setSpacing(12);
    list_->insertSubview(outcome_, 0);
    const auto scroll = std::make_shared<platform::ScrollView>();
    scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    scroll->addSubview(list_);
    auto view = std::make_shared<platform::View>();
    view->setBackgroundColor(Color{.red = 0.95, .green = 0.95, .blue = 0.97});
    view->addSubview(scroll);
    return view;
}

} // namespace kivo::device::app
