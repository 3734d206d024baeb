#include "ReadingScreen.hpp"

#include <utility>

namespace kivo::simulator {
namespace {

namespace readid = platform::readid;
using readid::FailureReason;

/// An ending that a person can choose.
struct Ending {
    std::string_view name;
    VendorText label;
    Reading reading;
};

const std::vector<Ending>& endings() {
    static const std::vector<Ending> all{
        Ending{"readPageAndChip", "Read the page and the chip", Reading::pageAndChip()},
        Ending{"readChip", "Read the chip only", Reading::chip()},
        Ending{"readPage", "Read the page only", Reading::page()},
        Ending{"userCancelled", "Cancel", Reading::failure(FailureReason::userCancelled)},
        Ending{"userCancelledAfterPage", "Cancel after the page", Reading::failure(FailureReason::userCancelled, true)},
        Ending{"backNavigation", "Go back", Reading::failure(FailureReason::backNavigation)},
        Ending{"cameraPermissionDenied", "Refuse the camera", Reading::failure(FailureReason::cameraPermissionDenied)},
        Ending{"vizCaptureTimeout", "Never show the page", Reading::failure(FailureReason::vizCaptureTimeout)},
        Ending{"wrongDocumentType", "Show a document of another kind",
               Reading::failure(FailureReason::wrongDocumentType)},
        Ending{"unsupportedDocument", "Show an unknown kind of document",
               Reading::failure(FailureReason::unsupportedDocument)},
        Ending{"noChip", "Show a document without a chip", Reading::failure(FailureReason::noChip, true)},
        Ending{"nfcAccessControlError", "Have the chip deny access",
               Reading::failure(FailureReason::nfcAccessControlError, true)},
        Ending{"nfcError", "Take the document away", Reading::failure(FailureReason::nfcError, true)},
        Ending{"backgroundTimeout", "Leave the app for too long", Reading::failure(FailureReason::backgroundTimeout)},
        Ending{"sessionExpired", "Take too long", Reading::failure(FailureReason::sessionExpired)},
        Ending{"authorisationError", "Have the access key refused",
               Reading::failure(FailureReason::authorisationError)},
        Ending{"serverSessionError", "Have the server lose the session",
               Reading::failure(FailureReason::serverSessionError)},
        Ending{"tooManyRequestsError", "Have the server refuse too many requests",
               Reading::failure(FailureReason::tooManyRequestsError)},
        Ending{"sslError", "Meet a server with a false certificate", Reading::failure(FailureReason::sslError)},
        Ending{"connectionError", "Lose the connection", Reading::failure(FailureReason::connectionError)},
        Ending{"otherFailure", "Fail for an unknown reason", Reading::failure(FailureReason::other)},
        Ending{"unknownSuccess", "Succeed in an unknown way", Reading::unknownSuccess()},
    };
    return all;
}

constexpr VendorText question = "Choose how the reading goes";

/// The vendor's text, in the words of the table that the host has named where the table has them.
std::string localized(const readid::UIResources& resources, VendorText text) {
    if (resources.customBundle && resources.customStringTableName) {
        auto own = resources.customBundle->localizedString(text.english(), *resources.customStringTableName);
        if (own != text.english()) {
            return own;
        }
    }
    return text.shown();
}

VendorLook lookOf(const readid::UIResources& resources) {
    const auto font = [&](const std::optional<platform::Font>& own, double size) {
        auto chosen = own.value_or(platform::Font::system(size));
        chosen.isScaled = resources.isDynamicTypeEnabled;
        return chosen;
    };
    constexpr double titleToText = 1.5;
    constexpr double hintToText = 0.9;
    return {.titleFont = font(resources.titleFont, resources.textSize * titleToText),
            .messageFont = font(resources.textFont, resources.textSize),
            .hintFont = font(resources.textFont, resources.textSize * hintToText),
            .buttonFont = font(resources.buttonFont, resources.buttonTextSize),
            .buttonTextColor = platform::Color::white(),
            .buttonColor = {.red = 0.04, .green = 0.29, .blue = 0.58},
            .buttonHeight = resources.buttonHeight,
            .buttonCornerRadius = resources.buttonCornerRadius};
}

} // namespace

ReadingScreen::ReadingScreen(std::shared_ptr<readid::UIResources> resources)
    : resources_{resources ? std::move(resources) : std::make_shared<readid::UIResources>()} {}

VendorPage ReadingScreen::page(VendorText line) const {
    return {"reading", lookOf(*resources_), localized(*resources_, "Document reader (simulated)"),
            localized(*resources_, line), VendorPage::Frame::card};
}

void ReadingScreen::tell(VendorText line) {
    auto now = page(line);
    now.showWork();
    now.showIn(*view());
}

void ReadingScreen::ask(std::function<void(const Reading&)> chosen) {
    const auto self = std::static_pointer_cast<ReadingScreen>(shared_from_this());
    std::vector<Choice> choices;
    for (const auto& ending : endings()) {
        choices.push_back({.name = std::string{ending.name},
                           .title = localized(*resources_, ending.label),
                           .action = [weak = std::weak_ptr{self}, chosen, &ending] {
                               if (const auto screen = weak.lock()) {
                                   // The buttons go with the first choice.
                                   screen->tell(question);
                                   chosen(ending.reading);
                               }
                           }});
    }
    auto choice = page(question);
    choice.offer(std::move(choices));
    choice.showIn(*view());
}

void ReadingScreen::viewDidDisappear(bool /*animated*/) {
    if (!presentingViewController() && gone) {
        std::exchange(gone, nullptr)();
    }
}

} // namespace kivo::simulator
