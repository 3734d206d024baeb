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
/// Height to width of a picture in which a page of a passport has its frame.
constexpr double shapeOfPreview = 0.69;
/// The part of a passport's page, and of a card, that the zone takes.
constexpr double zoneOfPage = 0.27;
constexpr double zoneOfCard = 0.41;

constexpr ScreenText usualHint = "Keep the page flat, without a reflection on the lines.";
constexpr ScreenText darkHint = "It is dark here. Turn on a light, or go where it is brighter.";
constexpr ScreenText lateHint = "Nothing could be read yet. You can also type the values by hand.";

/// The part of the picture around the frame.
constexpr double around = 14;
constexpr auto shade = platform::Color::white(0, 0.45);
/// A blue that is seen on paper and in the dark.
constexpr platform::Color zoneColor{.red = 0.16, .green = 0.5, .blue = 0.95};

void outline(platform::View& view, const platform::Color& color) {
    view.changeLayer([&](platform::Layer& layer) {
        layer.cornerRadius = 6;
        layer.borderWidth = 2;
        layer.borderColor = color;
    });
}

/// The camera's picture, as high as its width asks for.
class PagePreview final : public platform::PreviewView {
public:
    platform::Size sizeThatFits(double widthLimit) override {
        return {.width = widthLimit, .height = widthLimit * shapeOfPreview};
    }
};

/// The frame for the page, with the zone marked at its foot. The zone takes `share` of the page's height.
class PageFrame final : public platform::View {
public:
    explicit PageFrame(double share)
        : share_{share} {}

    void addZone() {
        outline(*this, platform::Color::white());
        outline(*zone_, zoneColor);
        addSubview(zone_);
    }

protected:
    void layoutSubviews() override {
        constexpr double gap = 6;
        const auto size = bounds().size;
        const auto height = size.height * share_;
        zone_->setFrame({.origin = {.x = gap, .y = size.height - height - gap},
                         .size = {.width = size.width - 2 * gap, .height = height}});
    }

private:
    const double share_;
    const std::shared_ptr<platform::View> zone_ = std::make_shared<platform::View>();
};

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
    const auto preview = std::make_shared<PagePreview>();
    preview->setIdentifier("aimPreview");
    preview->setAccessibilityLabel(page_.look().text("The camera's picture"));
    preview->changeLayer([](platform::Layer& layer) {
        layer.cornerRadius = 8;
        layer.masksToBounds = true;
        layer.borderWidth = around;
        layer.borderColor = shade;
    });
    preview->setPreviewSession(camera_->session());
    const auto frame = std::make_shared<PageFrame>(cards ? zoneOfCard : zoneOfPage);
    frame->setIdentifier("aimFrame");
    frame->setPlacement({.top = around, .left = around, .bottom = around, .right = around});
    frame->addZone();
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
