#include "VendorPage.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace kivo::simulator {
namespace {

using platform::Color;
using platform::View;

constexpr double sideMargin = 24;
/// As on the SDK's screens without a theme of the host's.
constexpr auto largestReadingSize = platform::ContentSizeCategory::accessibilityMedium;
constexpr double readableWidth = 440;
constexpr double progressWidth = 240;
constexpr double progressHeight = 6;
constexpr auto ground = Color::adaptive(Color::white(), {.red = 0.06, .green = 0.07, .blue = 0.09});
constexpr auto letters = Color::adaptive(Color::white(0.08), Color::white(0.95));
constexpr auto accent =
    Color::adaptive({.red = 0.04, .green = 0.29, .blue = 0.58}, {.red = 0.55, .green = 0.75, .blue = 1});
constexpr auto quiet =
    Color::adaptive({.red = 0.89, .green = 0.93, .blue = 0.98}, {.red = 0.11, .green = 0.19, .blue = 0.29});
constexpr auto warning =
    Color::adaptive({.red = 1, .green = 0.9, .blue = 0.6}, {.red = 0.36, .green = 0.27, .blue = 0.03});

void setFont(platform::TextStyled& view, const platform::Font& font) {
    view.setFont(font);
    view.setAdjustsFontForContentSizeCategory(font.isScaled);
}

/// A box of one colour.
std::shared_ptr<View> shape(const platform::Placement& placement, const Color& color, double cornerRadius) {
    auto made = std::make_shared<View>();
    made->setPlacement(placement);
    made->setBackgroundColor(color);
    made->changeLayer([&](platform::Layer& layer) { layer.cornerRadius = cornerRadius; });
    return made;
}

/// A viewfinder of that size, with the edge that a camera's screen draws.
std::shared_ptr<View> viewfinder(double width, double height, double cornerRadius) {
    auto made = shape({.centerX = 0, .centerY = 0, .width = width, .height = height}, quiet, cornerRadius);
    made->changeLayer([](platform::Layer& layer) {
        layer.borderWidth = 4;
        layer.borderColor = accent;
        layer.masksToBounds = true;
    });
    return made;
}

/// An oval with a head and shoulders in it.
std::shared_ptr<View> faceFrame() {
    auto oval = viewfinder(150, 196, 75);
    oval->addSubview(shape({.centerX = 0, .centerY = -22, .width = 62, .height = 74}, accent, 31));
    oval->addSubview(shape({.bottom = -46, .centerX = 0, .width = 118, .height = 96}, accent, 48));
    return oval;
}

/// A card with a portrait and lines in it.
std::shared_ptr<View> cardFrame() {
    auto card = viewfinder(240, 150, 14);
    card->addSubview(shape({.left = 22, .centerY = 0, .width = 62, .height = 80}, accent, 8));
    for (const auto& [top, width] : {std::pair{40.0, 112.0}, std::pair{68.0, 112.0}, std::pair{96.0, 72.0}}) {
        card->addSubview(shape({.top = top, .left = 102, .width = width, .height = 8}, accent, 4));
    }
    return card;
}

/// The text with lines that end behind a colon or a comma only.
std::string brokenAtMarksOnly(std::string_view text) {
    constexpr std::string_view noBreakSpace = "\u00a0";
    std::string kept;
    for (const char each : text) {
        const bool isMark = !kept.empty() && (kept.back() == ':' || kept.back() == ',');
        kept += each == ' ' && !isMark ? noBreakSpace : std::string_view{&each, 1};
    }
    return kept;
}

VendorText hintOf(VendorPage::Frame frame) {
    return frame == VendorPage::Frame::face ? VendorText{"Keep your face inside the oval and look straight ahead."}
                                            : VendorText{"Keep the document flat inside the frame."};
}

} // namespace

VendorPage::VendorPage(const std::string& name, VendorLook look, const std::string& title, const std::string& message,
                       Frame frame, std::shared_ptr<const platform::Image> picture)
    : look_{std::move(look)} {
    column_->setSpacing(12);
    column_->setMargins({.top = 16, .left = 0, .bottom = sideMargin, .right = 0});
    column_->setPlacement({.top = 0, .leading = sideMargin, .trailing = sideMargin, .maximumWidth = readableWidth});
    addBadge();
    const auto viewfinder = frame == Frame::face ? faceFrame() : cardFrame();
    const auto around = std::make_shared<View>();
    around->setPlacement({.minimumHeight = viewfinder->placement().height.value_or(0) + 16});
    around->addSubview(viewfinder);
    column_->addSubview(around);
    addLabel(name + "Hint", look_.hintFont, hintOf(frame).shown());
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

void VendorPage::addBadge() {
    // Every page of every vendor has the same badge, whatever look the host has given the vendor.
    const auto badge = addLabel("simulatedBadge", VendorLook{}.hintFont,
                                brokenAtMarksOnly(VendorText{"Simulated: no camera, no chip"}.shown()));
    badge->setPlacement({.minimumHeight = 32});
    badge->setBackgroundColor(warning);
    badge->changeLayer([](platform::Layer& layer) { layer.cornerRadius = 10; });
}

std::shared_ptr<platform::Label> VendorPage::addLabel(std::string name, const platform::Font& font,
                                                      const std::string& text) {
    auto label = std::make_shared<platform::Label>();
    label->setIdentifier(std::move(name));
    label->setTextAlignment(platform::TextAlignment::center);
    label->setTextColor(letters);
    label->setShrinksToWords(true);
    setFont(*label, font);
    label->setText(text);
    column_->addSubview(label);
    return label;
}

void VendorPage::offer(std::vector<Choice> choices) {
    for (bool isFirst = true; auto& choice : choices) {
        const auto button = std::make_shared<platform::Button>();
        button->setIdentifier(std::move(choice.name));
        button->setTitle(std::move(choice.title));
        // The expected ending comes first, and looks so.
        button->setTextColor(isFirst ? look_.buttonTextColor : accent);
        button->setBackgroundColor(isFirst ? look_.buttonColor : quiet);
        button->changeLayer([this](platform::Layer& layer) { layer.cornerRadius = look_.buttonCornerRadius; });
        button->setPlacement({.minimumHeight = look_.buttonHeight});
        setFont(*button, look_.buttonFont);
        button->addAction(platform::ControlEvent::touchUpInside,
                          [action = std::move(choice.action)](const auto&) { action(); });
        column_->addSubview(button);
        isFirst = false;
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

void VendorPage::showWork() {
    const auto wheel = std::make_shared<platform::ActivityIndicatorView>(platform::ActivityIndicatorView::Style::large);
    wheel->setColor(accent);
    wheel->setPlacement({.centerX = 0});
    wheel->startAnimating();
    const auto around = std::make_shared<View>();
    around->addSubview(wheel);
    column_->addSubview(around);
}

void VendorPage::setProgress(double progress) {
    if (!progress_) {
        const auto track =
            shape({.centerX = 0, .width = progressWidth, .height = progressHeight}, quiet, progressHeight / 2);
        progress_ = shape({}, accent, progressHeight / 2);
        track->addSubview(progress_);
        const auto around = std::make_shared<View>();
        around->addSubview(track);
        column_->addSubview(around);
    }
    progress_->setPlacement(
        {.top = 0, .leading = 0, .width = progressWidth * std::clamp(progress, 0.0, 1.0), .height = progressHeight});
}

void VendorPage::showIn(View& screen) const {
    screen.setBackgroundColor(ground);
    screen.setMaximumContentSizeCategory(largestReadingSize);
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
