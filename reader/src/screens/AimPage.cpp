#include "screens/AimPage.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/PreviewView.hpp>

#include <chrono>
#include <utility>

namespace kivo::reader {
namespace {

using namespace std::chrono_literals;

/// The time after which the page suggests to type.
constexpr auto timeToSuggestTyping = 20s;
constexpr double previewHeight = 240;

constexpr ScreenText usualHint = "Keep the page flat, without a reflection on the lines.";
constexpr ScreenText darkHint = "It is dark here. Turn on a light, or go where it is brighter.";
constexpr ScreenText lateHint = "Nothing could be read yet. You can also type the values by hand.";

/// The part of the picture around the frame.
constexpr double around = 14;
constexpr auto shade = platform::Color::white(0, 0.45);
/// A blue that is seen on paper and in the dark.
constexpr platform::Color zoneColor{.red = 0.16, .green = 0.5, .blue = 0.95};

std::shared_ptr<platform::View> outline(const platform::Placement& placement, const platform::Color& color) {
    auto view = std::make_shared<platform::View>();
    view->setPlacement(placement);
    view->changeLayer([&](platform::Layer& layer) {
        layer.cornerRadius = 6;
        layer.borderWidth = 2;
        layer.borderColor = color;
    });
    return view;
}

} // namespace

std::shared_ptr<AimPage> AimPage::open(const Look& look, bool cards, PageCamera::ZoneReaders makeReader,
                                       Events events) {
    auto page = std::make_shared<AimPage>(look, cards, std::move(events));
    page->camera_ = PageCamera::open(std::move(makeReader), [weak = std::weak_ptr{page}](const auto& sight) {
        if (const auto self = weak.lock()) {
            self->see(sight);
        }
    });
    page->addPreview(cards);
    page->hint_ = page->page_.addText("Hint", usualHint);
    look.dressCaption(*page->hint_);
    page->page_.addButton("Type", "Type the values by hand", Page::Way::other, [weak = std::weak_ptr{page}] {
        if (const auto self = weak.lock()) {
            self->events_.type();
        }
    });
    platform::services().mainQueue->asyncAfter(timeToSuggestTyping, [weak = std::weak_ptr{page}] {
        if (const auto self = weak.lock()) {
            self->hasWaited_ = true;
            self->say(lateHint);
        }
    });
    return page;
}

AimPage::AimPage(const Look& look, bool cards, Events events)
    : page_{look, "aim", "Show the page to the camera",
            cards ? ScreenText{"Hold the side of the card with the lines of letters and arrows into the frame."}
                  : ScreenText{"Hold the page with the photo into the frame, with the two lines at its foot."}}
    , events_{std::move(events)} {}

void AimPage::addPreview(bool cards) {
    const auto preview = std::make_shared<platform::PreviewView>();
    preview->setIdentifier("aimPreview");
    preview->setAccessibilityLabel(page_.look().text("The camera's picture"));
    preview->setPlacement({.height = previewHeight});
    preview->changeLayer([](platform::Layer& layer) {
        layer.cornerRadius = 8;
        layer.masksToBounds = true;
        layer.borderWidth = around;
        layer.borderColor = shade;
    });
    preview->setPreviewSession(camera_->session());
    const auto frame =
        outline({.top = around, .left = around, .bottom = around, .right = around}, platform::Color::white());
    frame->setIdentifier("aimFrame");
    constexpr double threeLines = 84;
    constexpr double twoLines = 56;
    frame->addSubview(
        outline({.left = 6, .bottom = 6, .right = 6, .height = cards ? threeLines : twoLines}, zoneColor));
    preview->addSubview(frame);
    page_.add(preview);
}

void AimPage::see(const ZoneReader::Sight& sight) {
    if (sight.zone) {
        camera_ = nullptr;
        events_.read(*sight.zone);
        return;
    }
    say(sight.isTooDark ? darkHint : hasWaited_ ? lateHint : usualHint);
}

void AimPage::say(ScreenText text) {
    if (auto shown = page_.look().text(text); shown != hint_->text()) {
        hint_->setText(std::move(shown));
    }
}

} // namespace kivo::reader
