#include "ScanPage.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <utility>

namespace kivo::simulator {
namespace {

std::shared_ptr<platform::Label> makeLabel(std::string name, const platform::Font& font, std::string text) {
    const auto label = std::make_shared<platform::Label>();
    label->setIdentifier(std::move(name));
    label->setFont(platform::FontMetrics::scaledFont(font));
    label->setAdjustsFontForContentSizeCategory(true);
    label->setTextAlignment(platform::TextAlignment::center);
    label->setText(std::move(text));
    return label;
}

} // namespace

ScanPage::ScanPage(const std::string& title, const std::string& message,
                   std::shared_ptr<const platform::Image> picture) {
    const auto column = std::make_shared<platform::StackView>();
    column->setSpacing(12);
    column->setPlacement({.top = 40, .left = 24, .right = 24});
    column->addSubview(makeLabel("scanTitle", platform::Font::system(24), title));
    message_ = makeLabel("scanMessage", platform::Font::system(17), message);
    column->addSubview(message_);
    if (picture) {
        const auto view = std::make_shared<platform::ImageView>();
        view->setIdentifier("scanPicture");
        view->setPlacement({.height = 160});
        view->setImage(std::move(picture));
        column->addSubview(view);
    }
    content_ = column;
}

void ScanPage::offer(std::vector<Choice> choices) {
    for (auto& choice : choices) {
        const auto button = std::make_shared<platform::Button>();
        button->setIdentifier(std::move(choice.name));
        button->setTitle(std::move(choice.title));
        button->setTextColor(platform::Color::systemBlue());
        button->setPlacement({.minimumHeight = 44});
        button->addAction(platform::ControlEvent::touchUpInside,
                          [action = std::move(choice.action)](const auto&) { action(); });
        content_->addSubview(button);
    }
}

void ScanPage::setMessage(const platform::AttributedText& message) {
    message_->setText(message.text);
    if (message.foregroundColor) {
        message_->setTextColor(*message.foregroundColor);
    }
    if (message.font) {
        message_->setFont(*message.font);
    }
}

void ScanPage::showIn(platform::View& screen) const {
    screen.setBackgroundColor(platform::Color::white());
    const auto former = screen.subviews();
    for (const auto& view : former) {
        view->removeFromSuperview();
    }
    const auto scroll = std::make_shared<platform::ScrollView>();
    scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    scroll->addSubview(content_);
    screen.addSubview(scroll);
}

} // namespace kivo::simulator
