#include "screens/Walk.hpp"

#include "files/DataGroups.hpp"
#include "files/FaceImage.hpp"

#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <system_error>
#include <utility>

namespace kivo::reader {

namespace readid = platform::readid;
using readid::DocumentType;
using readid::FailureReason;

Walk::Walk(readid::NFCWithAccessControlFlow flow, ReaderParts parts, Handler handler)
    : flow_{std::move(flow)}
    , parts_{std::move(parts)}
    , look_{flow_.uiResources}
    , handler_{std::move(handler)} {
    if (flow_.allowedDocumentTypes.empty()) {
        flow_.allowedDocumentTypes = {DocumentType::passport, DocumentType::identityCardTD1,
                                      DocumentType::identityCardTD2};
    }
}

void Walk::begin(platform::ViewController& from, platform::ModalPresentationStyle style, bool withInstructions) {
    withChoice_ = flow_.shouldShowDocumentSelection && flow_.allowedDocumentTypes.size() > 1;
    withInstructions_ = withInstructions;
    const auto screen = std::make_shared<ReaderScreen>(look_);
    screen_ = screen;
    screen->gone = [self = shared_from_this()] { self->fail(FailureReason::userCancelled); };
    screen->close = when([](Walk& walk) {
        walk.fail(walk.isCameraRefused_ ? FailureReason::cameraPermissionDenied : FailureReason::userCancelled);
    });
    screen->setModalPresentationStyle(style);
    if (withChoice_) {
        showChoice();
    } else if (withInstructions_) {
        showInstructions();
    } else {
        showAim();
    }
    from.present(screen, /*animated=*/true);
}

void Walk::showChoice() {
    Page page{look_, "choose", "Choose your document", "Which of these documents do you have at hand?"};

    page.setIllustration("step-document");

    const struct {
        DocumentType type;
        std::string_view identifier;
        std::string_view image;
        ScreenText title;
    } rows[] = {
        {DocumentType::passport, "Passport", "documentOptionOneImage", "Passport"},
        {DocumentType::identityCardTD1, "IdentityCardTD1", "documentOptionTwoImage",
         "Identity card with three lines of arrows"},
        {DocumentType::identityCardTD2, "IdentityCardTD2", "documentOptionTwoImage",
         "Identity card with two lines of arrows"},
    };

    for (const auto& row : rows) {
        if (allows(row.type)) {
            page.addChoice(row.identifier, row.image, row.title,
                           when([type = row.type](Walk& walk) { walk.choose(type); }));
        }
    }
    show(page, nullptr);
}

void Walk::choose(DocumentType type) {
    flow_.allowedDocumentTypes = {type};
    if (withInstructions_) {
        showInstructions();
    } else {
        showAim();
    }
}

void Walk::showInstructions() {
    Page page{look_, "instructions", "Have your document at hand", "This is how the reading goes:"};
    page.setIllustration(readsCards() ? "reader-card" : "reader-passport");

    const struct {
        std::string_view identifier;
        ScreenText text;
    } steps[] = {
        {"Aim", parts_.makeZoneReader
                    ? ScreenText{"Show the lines of the document to the camera, or type three values."}
                    : ScreenText{"Type three values, which are printed on the document."}},
        {"Lay", "Lay the document on the card reader."},
        {"Wait", "Leave the document there until all is read."},
    };

    const auto card = page.addCard();
    for (int number = 1; const auto& [identifier, text] : steps) {
        page.addRow(card, page.number(number++), page.label(identifier, look_.text(text)));
    }
    page.addButton("Continue", "Continue", Page::Way::on, when(&Walk::showAim));
    show(page, nullptr);
}

void Walk::showAim() {
    typingRemark_ = {};
    if (!parts_.makeZoneReader) {
        showTyping();
        return;
    }
    aim_ = AimPage::open(look_, readsCards(), parts_.makeZoneReader,
                         {.read =
                              [weak = weak_from_this()](const Zone& zone) {
                                  if (const auto self = weak.lock()) {
                                      self->pageWasRead(zone);
                                  }
                              },
                          .type = when(&Walk::showTyping)});
    isCameraRefused_ = aim_->cameraState() == PageCamera::State::refused;
    hasCamera_ = aim_->cameraState() != PageCamera::State::missing;
    if (aim_->cameraState() == PageCamera::State::running) {
        show(aim_->page(), nullptr);
        return;
    }
    aim_ = nullptr;
    typingRemark_ = isCameraRefused_
                        ? ScreenText{"The camera may not be used. Allow it in the settings of this machine, or type "
                                     "three values, which are printed on the document."}
                        : ScreenText{"There is no camera. Type three values, which are printed on the document."};
    showTyping();
}

void Walk::showTyping() {
    const bool offersAccessNumber = allows(DocumentType::identityCardTD1) || allows(DocumentType::identityCardTD2);
    typing_ = TypingPage::make(look_, typingRemark_, offersAccessNumber,
                               {.typed =
                                    [weak = weak_from_this()](const AccessKey& key) {
                                        if (const auto self = weak.lock()) {
                                            self->valuesWereTyped(key);
                                        }
                                    },
                                .touched = when(&Walk::restartPatience),
                                .aim = hasCamera_ ? when(&Walk::showAim) : std::function<void()>{}});
    show(typing_->page(), hasCamera_ && !isCameraRefused_ ? &Walk::showAim : nullptr);
}

void Walk::pageWasRead(const Zone& zone) {
    aim_ = nullptr;
    if (!allows(zone.type)) {
        showFailure(wrongDocument());
        return;
    }
    zone_ = zone;
    document_.type = zone.type;
    document_.lines = zone.lines;
    key_ = {.documentNumber = zone.documentNumber, .dateOfBirth = zone.dateOfBirth, .dateOfExpiry = zone.dateOfExpiry};
    const bool isShown = flow_.shouldShowVIZResult &&
                         flow_.vizResultScreenConfiguration.vizResultDataMode != readid::VIZResultDataMode::none;
    if (isShown) {
        showPageResult();
    } else {
        showChip();
    }
}

void Walk::valuesWereTyped(const AccessKey& key) {
    isCameraRefused_ = false;
    zone_ = std::nullopt;
    document_.lines.clear();
    key_ = key;
    showChip();
}

void Walk::showPageResult() {
    const bool isFull = flow_.vizResultScreenConfiguration.vizResultDataMode == readid::VIZResultDataMode::full;
    show(pageResult(look_, *zone_, isFull, when(&Walk::showChip)), &Walk::showAim);
}

void Walk::showChip() {
    chipPage_ = std::make_shared<ChipPage>(look_, zone_ ? zone_->type != DocumentType::passport : readsCards());
    auto order = parts_.order;
    order.key = key_;
    show(chipPage_->page(), stepOfDocument());
    const auto number = ++readingNumber_;
    try {
        reading_ = parts_.readChip(
            std::move(order),
            [weak = weak_from_this(), number](const ChipProgress& progress) {
                if (const auto self = weak.lock(); self && self->readingNumber_ == number && self->chipPage_) {
                    self->restartPatience();
                    self->chipPage_->show(progress);
                }
            },
            [weak = weak_from_this(), number](const auto& outcome) {
                if (const auto self = weak.lock(); self && self->readingNumber_ == number) {
                    self->readingDidEnd(outcome);
                }
            });
    } catch (const std::system_error&) {
        // No thread is left to read with.
        readingDidEnd(std::unexpected{ChipFailure::broken});
    }
}

void Walk::readingDidEnd(const std::expected<ChipDocument, ChipFailure>& outcome) {
    if (!handler_) {
        return;
    }
    reading_ = nullptr;
    chipPage_ = nullptr;
    if (outcome) {
        chipWasRead(*outcome);
        return;
    }
    ++failedReadings_;
    showFailure(failedStep(outcome.error()));
}

void Walk::chipWasRead(const ChipDocument& chip) {
    const auto dg1 = chip.files.find(DocumentFile::dg1);
    const auto zone = dg1 != chip.files.end() ? zoneOf(dg1->second) : std::nullopt;
    if (!zone) {
        ++failedReadings_;
        showFailure(failedStep(ChipFailure::broken));
        return;
    }
    if (!allows(zone->type)) {
        showFailure(wrongDocument());
        return;
    }
    // The names of the page have no check digit, so the camera may have mistaken a letter of them.
    const bool isSameDocument = zone_ && zone_->type == zone->type && zone_->documentNumber == zone->documentNumber &&
                                zone_->dateOfBirth == zone->dateOfBirth && zone_->dateOfExpiry == zone->dateOfExpiry;
    if (isSameDocument) {
        document_.lines = zone->lines;
    }
    zone_ = zone;
    document_.type = zone->type;
    document_.chip = chip;
    const bool isShown = flow_.shouldShowNFCResult &&
                         flow_.nfcResultScreenConfiguration.nfcResultDataMode != readid::NFCResultDataMode::none;
    if (isShown) {
        showChipResult();
    } else {
        send();
    }
}

void Walk::showChipResult() {
    const bool isFull = flow_.nfcResultScreenConfiguration.nfcResultDataMode == readid::NFCResultDataMode::full;
    resultPage_ = std::make_shared<ChipResultPage>(look_, *zone_, document_.chip->verdict, isFull, when(&Walk::send));
    show(resultPage_->page(), stepOfDocument());
    decodePortrait();
}

void Walk::decodePortrait() {
    const auto dg2 = document_.chip->files.find(DocumentFile::dg2);
    if (dg2 == document_.chip->files.end()) {
        return;
    }
    // A chip's picture may be large. The block holds the queue, so that nobody waits for the block.
    try {
        const auto queue = std::make_shared<platform::SerialQueue>("portrait");
        queue->async([queue, weak = std::weak_ptr{resultPage_}, bytes = dg2->second] {
            platform::services().mainQueue->async([weak, portrait = decodedFace(bytes)] {
                if (const auto page = weak.lock(); page && portrait) {
                    page->setPortrait(*portrait);
                }
            });
        });
    } catch (const std::system_error&) {
        platform::services().diagnostics->report("document reader", "no thread is left to decode the portrait");
    }
}

void Walk::goOnWithoutChip() {
    document_.chip = std::nullopt;
    send();
}

void Walk::send() {
    resultPage_ = nullptr;
    Page page{look_, "sending", "Sending the document", "This takes a moment."};
    page.setIllustration("reader-sending");
    page.addWheel();
    show(page, nullptr);
    sending_ = Sending::start(flow_, document_, [weak = weak_from_this()](const Sending::Outcome& outcome) {
        if (const auto self = weak.lock()) {
            self->sendingDidEnd(outcome);
        }
    });
}

void Walk::sendingDidEnd(const Sending::Outcome& outcome) {
    if (outcome) {
        succeed(*outcome);
    } else {
        showFailure(failedSending(outcome.error()));
    }
}

} // namespace kivo::reader
