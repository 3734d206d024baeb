#include "VendorPage.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <utility>

namespace kivo::simulator {
namespace {

constexpr double sideMargin = 24;

void setFont(platform::TextStyled& view, const platform::Font& font) {
    view.setFont(font);
    view.setAdjustsFontForContentSizeCategory(font.isScaled);
}

} // namespace

VendorPage::VendorPage(const std::string& name, VendorLook look, const std::string& title, const std::string& message,
                       std::shared_ptr<const platform::Image> picture)
    : look_{std::move(look)} {
    column_->setSpacing(12);
    column_->setMargins({.top = 40, .left = 0, .bottom = sideMargin, .right = 0});
    column_->setPlacement({.top = 0, .left = sideMargin, .right = sideMargin});
    addLabel(name + "Title", look_.titleFont, title);
    message_ = addLabel(name + "Message", look_.messageFont, message);
    if (picture) {
        const auto view = std::make_shared<platform::ImageView>();
        view->setIdentifier(name + "Picture");
        view->setPlacement({.height = 160});
        view->setImage(std::move(picture));
        column_->addSubview(view);
    }
}

std::shared_ptr<platform::Label> VendorPage::addLabel(std::string name, const platform::Font& font,
                                                      const std::string& text) {
    auto label = std::make_shared<platform::Label>();
    label->setIdentifier(std::move(name));
    label->setTextAlignment(platform::TextAlignment::center);
    setFont(*label, font);
    label->setText(text);
    column_->addSubview(label);
    return label;
}

void VendorPage::offer(std::vector<Choice> choices) {
    for (auto& choice : choices) {
        const auto button = std::make_shared<platform::Button>();
        button->setIdentifier(std::move(choice.name));
        button->setTitle(std::move(choice.title));
        button->setTextColor(look_.buttonTextColor);
        button->setBackgroundColor(look_.buttonColor);
        button->changeLayer([this](platform::Layer& layer) { layer.cornerRadius = look_.buttonCornerRadius; });
        button->setPlacement({.minimumHeight = look_.buttonHeight});
        setFont(*button, look_.buttonFont);
        button->addAction(platform::ControlEvent::touchUpInside,
                          [action = std::move(choice.action)](const auto&) { action(); });
        column_->addSubview(button);
    }
}

void VendorPage::setMessage(const platform::AttributedText& message) {
    message_->setText(message.text);
    if (message.foregroundColor) {
        message_->setTextColor(*message.foregroundColor);
    }
    if (message.font) {
        message_->setFont(*message.font);
    }
}

void VendorPage::showIn(platform::View& screen) const {
    screen.setBackgroundColor(platform::Color::white());
    const auto former = screen.subviews();
    for (const auto& view : former) {
        view->removeFromSuperview();
    }
    const auto scroll = std::make_shared<platform::ScrollView>();
    scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    scroll->addSubview(column_);
    screen.addSubview(scroll);
}

} // namespace kivo::simulator
