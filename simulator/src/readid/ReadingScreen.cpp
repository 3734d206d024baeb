#include "ReadingScreen.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <utility>

namespace kivo::simulator {
namespace {

constexpr double margin = 24;
constexpr double spacing = 12;

void applyFont(platform::TextStyled& text, const std::optional<platform::Font>& font) {
    if (font) {
        text.setFont(*font);
        text.setAdjustsFontForContentSizeCategory(font->isScaled);
    }
}

} // namespace

ReadingScreen::ReadingScreen(std::string title, ReadingLook look, std::function<void(std::size_t)> chosen)
    : look_{std::move(look)}
    , chosen_{std::move(chosen)}
    , title_{std::make_shared<platform::Label>()}
    , text_{std::make_shared<platform::Label>()}
    , column_{std::make_shared<platform::StackView>()}
    , buttons_{std::make_shared<platform::StackView>()} {
    title_->setText(std::move(title));
    addLabel(title_, "readingTitle", look_.titleFont);
    addLabel(text_, "readingText", look_.textFont);
    buttons_->setSpacing(spacing);
    column_->addSubview(buttons_);
    column_->setSpacing(spacing);
    column_->setMargins({.top = margin, .left = 0, .bottom = margin, .right = 0});
    column_->setPlacement({.top = 0, .left = margin, .right = margin});
}

void ReadingScreen::addLabel(const std::shared_ptr<platform::Label>& label, const char* name,
                             const std::optional<platform::Font>& font) {
    label->setIdentifier(name);
    label->setTextAlignment(platform::TextAlignment::center);
    applyFont(*label, font);
    column_->addSubview(label);
}

std::shared_ptr<platform::View> ReadingScreen::loadView() {
    const auto scroll = std::make_shared<platform::ScrollView>();
    scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    scroll->addSubview(column_);
    auto all = std::make_shared<platform::View>();
    all->setBackgroundColor(platform::Color::white());
    all->addSubview(scroll);
    return all;
}

void ReadingScreen::ask(const std::string& text, const std::vector<Choice>& choices) {
    text_->setText(text);
    for (std::size_t index = 0; index < choices.size(); ++index) {
        const auto button = std::make_shared<platform::Button>();
        button->setIdentifier(choices[index].name);
        button->setTitle(choices[index].label);
        button->setPlacement({.minimumHeight = look_.buttonHeight});
        button->setTextColor(platform::Color::white());
        button->setBackgroundColor(platform::Color::systemBlue());
        button->changeLayer([this](platform::Layer& layer) { layer.cornerRadius = look_.buttonCornerRadius; });
        applyFont(*button, look_.buttonFont);
        button->addAction(platform::ControlEvent::touchUpInside, [weak = weak_from_this(), index](const auto&) {
            if (const auto self = std::static_pointer_cast<ReadingScreen>(weak.lock())) {
                // The buttons go with the first choice.
                self->buttons_->setHidden(true);
                self->chosen_(index);
            }
        });
        buttons_->addSubview(button);
    }
}

void ReadingScreen::viewDidDisappear(bool /*animated*/) {
    if (!presentingViewController() && gone) {
        std::exchange(gone, nullptr)();
    }
}

void ReadingScreen::tell(const std::string& text) {
    text_->setText(text);
    buttons_->setHidden(true);
}

} // namespace kivo::simulator
