#include "screens/Page.hpp"

#include <utility>

namespace kivo::reader {
namespace {

// As on the SDK's screens.
constexpr double margin = 20;
constexpr double gap = 20;
constexpr double smallGap = 8;
constexpr double cardGap = 12;
constexpr double readableWidth = 440;
constexpr double pictureShare = 0.29;
constexpr double iconSize = 24;
/// A title is large already, and leaves what is below in sight.
constexpr auto largestTitle = platform::ContentSizeCategory::accessibilityLarge;

/// What an action does may replace the page, and with it the button that holds the action.
platform::Control::Action keptWhileRunning(std::function<void()> action) {
    return [action = std::move(action)](const auto& /*sender*/) {
        const auto kept = action;
        kept();
    };
}

} // namespace

Page::Page(Look look, std::string name, ScreenText title, ScreenText message)
    : look_{std::move(look)}
    , name_{std::move(name)} {
    column_->setSpacing(gap);
    column_->setMargins({.top = smallGap, .left = 0, .bottom = gap, .right = 0});
    column_->setPlacement(
        {.top = 0, .bottom = 0, .leading = margin, .trailing = margin, .maximumWidth = readableWidth});
    illustration_->setHidden(true);
    illustration_->setPlacement({.shareOfDisplay = pictureShare});
    const auto words = std::make_shared<platform::StackView>();
    words->setSpacing(smallGap);
    title_ = label("Title", look_.text(title));
    look_.dressTitle(*title_);
    title_->setMaximumContentSizeCategory(largestTitle);
    message_ = label("Message", look_.text(message));
    message_->setHidden(message.isEmpty());
    for (const auto& each : {title_, message_}) {
        each->setTextAlignment(platform::TextAlignment::center);
        words->addSubview(each);
    }
    content_->setSpacing(cardGap);
    content_->setHidden(true);
    const auto rest = std::make_shared<platform::View>();
    rest->setPlacement({.grows = true});
    buttons_->setSpacing(cardGap);
    buttons_->setHidden(true);
    for (const auto& each :
         std::initializer_list<std::shared_ptr<platform::View>>{illustration_, words, content_, rest, buttons_}) {
        column_->addSubview(each);
    }
}

void Page::setIllustration(std::string_view image) {
    illustration_->setImage(look_.image(image));
    illustration_->setHidden(illustration_->image() == nullptr);
}

std::shared_ptr<platform::Label> Page::label(std::string_view identifier, std::string text) const {
    auto made = std::make_shared<platform::Label>();
    made->setIdentifier(name_ + std::string{identifier});
    look_.dressText(*made);
    made->setShrinksToWords(true);
    made->setText(std::move(text));
    return made;
}

std::shared_ptr<platform::Label> Page::addText(std::string_view identifier, ScreenText text) {
    auto made = label(identifier, look_.text(text));
    made->setTextAlignment(platform::TextAlignment::center);
    add(made);
    return made;
}

std::shared_ptr<platform::TextField> Page::addField(std::string_view identifier, ScreenText label) {
    const auto caption = this->label(std::string{identifier} + "Label", look_.text(label));
    look_.dressCaption(*caption);
    auto field = std::make_shared<platform::TextField>();
    field->setIdentifier(name_ + std::string{identifier});
    field->setAccessibilityLabel(look_.text(label));
    // A value of ten characters fits into the field of a narrow display.
    field->setMaximumContentSizeCategory(platform::ContentSizeCategory::accessibilityLarge);
    field->setAutocorrected(false);
    field->setKeyboardType(platform::KeyboardType::asciiCapable);
    look_.dressText(*field);
    field->setBackgroundColor(look_.colors().surface);
    field->setPlacement({.minimumHeight = 48});
    field->changeLayer([&](platform::Layer& layer) {
        layer.cornerRadius = 8;
        layer.borderWidth = 1;
        layer.borderColor = look_.colors().border;
    });
    const auto pair = std::make_shared<platform::StackView>();
    pair->setSpacing(smallGap / 2);
    pair->addSubview(caption);
    pair->addSubview(field);
    add(pair);
    return field;
}

Page::Column Page::addCard() {
    const auto frame = std::make_shared<platform::View>();
    look_.dressCard(*frame);
    auto column = std::make_shared<platform::StackView>();
    column->setPlacement({.top = 0, .left = 0, .right = 0});
    column->setMargins({.top = 14, .left = 16, .bottom = 14, .right = 16});
    column->setSpacing(cardGap);
    frame->addSubview(column);
    add(frame);
    return column;
}

std::shared_ptr<platform::StackView> Page::addRow(const Column& card, const std::shared_ptr<platform::View>& symbol,
                                                  const std::shared_ptr<platform::Label>& text) const {
    auto row = std::make_shared<platform::StackView>();
    row->setAxis(platform::StackView::Axis::horizontal);
    row->setAlignment(platform::StackView::Alignment::center);
    row->setSpacing(cardGap);
    if (symbol) {
        row->addSubview(symbol);
    }
    text->setPlacement({.grows = true});
    row->addSubview(text);
    card->addSubview(row);
    return row;
}

std::shared_ptr<platform::ImageView> Page::icon(std::string_view image, const platform::Color& color) const {
    auto found = look_.image(image);
    if (!found) {
        return nullptr;
    }
    auto view = std::make_shared<platform::ImageView>();
    view->setImage(std::move(found));
    view->setTintColor(color);
    view->setPlacement({.width = iconSize, .height = iconSize});
    return view;
}

std::shared_ptr<platform::View> Page::number(int number) const {
    constexpr double size = 28;
    auto view = label("Step" + std::to_string(number), std::to_string(number));
    view->setAdjustsFontForContentSizeCategory(false);
    view->setTextAlignment(platform::TextAlignment::center);
    view->setBackgroundColor(look_.colors().tint);
    view->changeLayer([](platform::Layer& layer) { layer.cornerRadius = size / 2; });
    view->setPlacement({.width = size, .height = size});
    return view;
}

void Page::addChoice(std::string_view identifier, std::string_view image, ScreenText title,
                     std::function<void()> action) {
    const auto card = addCard();
    const auto row =
        addRow(card, icon(image, look_.colors().accent), label(std::string{identifier} + "Label", look_.text(title)));
    if (const auto arrow = icon("chevron", look_.colors().secondaryText)) {
        arrow->setPlacement({.width = 12, .height = 20});
        row->addSubview(arrow);
    }
    const auto button = std::make_shared<platform::Button>();
    button->setIdentifier(name_ + std::string{identifier});
    button->setAccessibilityLabel(look_.text(title));
    button->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    button->addAction(platform::ControlEvent::touchUpInside, keptWhileRunning(std::move(action)));
    card->superview()->addSubview(button);
}

void Page::addButton(std::string_view identifier, ScreenText title, Way way, std::function<void()> action) {
    const auto button = std::make_shared<platform::Button>();
    button->setIdentifier(name_ + std::string{identifier});
    button->setTitle(look_.text(title));
    look_.dressButton(*button, /*standsOut=*/way == Way::on);
    button->addAction(platform::ControlEvent::touchUpInside, keptWhileRunning(std::move(action)));
    buttons_->addSubview(button);
    buttons_->setHidden(false);
}

void Page::add(const std::shared_ptr<platform::View>& view) {
    content_->addSubview(view);
    content_->setHidden(false);
}

std::shared_ptr<platform::View> Page::addWheel() {
    auto wheel = std::make_shared<platform::ActivityIndicatorView>(platform::ActivityIndicatorView::Style::large);
    wheel->setIdentifier(name_ + "Wheel");
    wheel->setAccessibilityLabel(title_->text());
    wheel->setColor(look_.colors().accent);
    wheel->setPlacement({.top = 0, .centerX = 0});
    wheel->startAnimating();
    auto row = std::make_shared<platform::View>();
    row->addSubview(wheel);
    wheel_ = std::move(wheel);
    add(row);
    return row;
}

void Page::setTitle(ScreenText text) {
    title_->setText(look_.text(text));
    if (wheel_) {
        wheel_->setAccessibilityLabel(title_->text());
    }
}

} // namespace kivo::reader
