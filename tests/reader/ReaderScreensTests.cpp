#include "ReaderScreensFixture.hpp"

#include <nlohmann/json.hpp>

namespace kivo::test {
namespace {

using platform::UrlErrorKind;
using platform::readid::NFCResultDataMode;
using platform::readid::VIZResultDataMode;
using reader::ChipFailure;
using reader::ChipProgress;
using reader::DocumentFile;
using reader::Proof;

class ReaderScreens : public ReaderScreensFixture {};

TEST_F(ReaderScreens, TakeAPersonFromTheChoiceToTheService) {
    flow.shouldShowDocumentSelection = true;
    flow.shouldShowVIZResult = true;
    flow.shouldShowNFCResult = true;
    begin(/*withInstructions=*/true);
    tap("choosePassport");
    EXPECT_TRUE(sees("Lay the document on the card reader."));
    tap("instructionsContinue");
    EXPECT_TRUE(camera->isOn());
    readPage();
    EXPECT_FALSE(camera->isOn());
    EXPECT_TRUE(sees("L898902C3"));
    EXPECT_TRUE(sees("ANNA MARIA"));
    tap("pageResultContinue");
    EXPECT_EQ(chip->order.key.documentNumber, "L898902C3");
    EXPECT_EQ(chip->order.key.dateOfBirth, "740812");
    chip->tell({.step = ChipProgress::Step::waitingForReader});
    EXPECT_TRUE(sees("Connect the card reader"));
    chip->tell({.step = ChipProgress::Step::waitingForCard});
    EXPECT_TRUE(sees("Lay the document on the reader"));
    chip->tell({.step = ChipProgress::Step::reading, .file = DocumentFile::dg1, .bytesRead = 9, .bytesInAll = 9});
    chip->tell({.step = ChipProgress::Step::reading, .file = DocumentFile::dg2, .bytesRead = 50, .bytesInAll = 200});
    EXPECT_EQ(window_->find("chipGroup1")->accessibilityLabel(), "Data of the page: read");
    EXPECT_FALSE(window_->find("chipGroup1Percent")->isVisible());
    EXPECT_TRUE(sees("Portrait"));
    EXPECT_TRUE(sees("25%"));
    chip->tell({.step = ChipProgress::Step::provingChip});
    EXPECT_EQ(window_->find("chipGroup2")->accessibilityLabel(), "Portrait: read");
    readChip(documentWith(passportLines()));
    EXPECT_TRUE(sees("The document was read. Not every check could be made here."));
    EXPECT_TRUE(sees("The seal of the data holds."));
    EXPECT_TRUE(sees("12.08.1974"));
    tap("chipResultContinue");
    EXPECT_TRUE(sees("Sending the document"));
    proxyAnswers(accepted());
    EXPECT_EQ(answer(), "page and chip");
    const auto& both = std::get<platform::readid::VIZNFC>(*heard.front());
    EXPECT_EQ(both.viz.mrzData.mrz.lines, passportLines());
    EXPECT_EQ(both.nfc.readIDSession->sessionId(), "r1");
    walk = nullptr;
    const std::weak_ptr<void> screen = window_->rootViewController()->presentedViewController();
    EXPECT_TRUE(screen.expired());
}

TEST_F(ReaderScreens, ShowAsMuchAsTheFlowSays) {
    const struct {
        VIZResultDataMode page;
        NFCResultDataMode chip;
        bool showsNumber;
        bool showsName;
        bool showsProofs;
    } rows[] = {
        {VIZResultDataMode::none, NFCResultDataMode::simple, false, false, false},
        {VIZResultDataMode::simple, NFCResultDataMode::full, true, false, true},
        {VIZResultDataMode::full, NFCResultDataMode::full, true, true, true},
    };

    flow.shouldShowVIZResult = true;
    flow.shouldShowNFCResult = true;
    for (const auto& row : rows) {
        flow.vizResultScreenConfiguration.vizResultDataMode = row.page;
        flow.nfcResultScreenConfiguration.nfcResultDataMode = row.chip;
        begin();
        readPage();
        EXPECT_EQ(sees("L898902C3"), row.showsNumber);
        EXPECT_EQ(sees("ERIKSSON"), row.showsName);
        if (row.page != VIZResultDataMode::none) {
            tap("pageResultContinue");
        }
        readChip(documentWith(passportLines()));
        EXPECT_TRUE(sees("The chip was read"));
        EXPECT_EQ(sees("Whether the chip is a copy is not known."), row.showsProofs);
        tap("readerClose");
        EXPECT_EQ(answer(), failure(FailureReason::userCancelled, true));
    }
}

TEST_F(ReaderScreens, SayInWordsWhatWasProven) {
    using enum Proof;
    const std::pair<reader::Verdict, std::string_view> rows[] = {
        {{proven, proven, proven, proven, proven, proven}, "The document is genuine."},
        {{proven, proven, proven, notTried, refuted, proven}, "The document has failed a check."},
        {{refuted, proven, proven, proven, proven, proven}, "The document has failed a check."},
        {{proven, proven, proven, proven, proven, refuted}, "The document has failed a check."},
        {{proven, proven, notTried, notTried, proven, proven},
         "The document was read. Not every check could be made here."},
        {{}, "The document was read. Not every check could be made here."},
    };
    for (const auto& [verdict, words] : rows) {
        EXPECT_EQ(reader::verdictInWords(verdict).key(), words);
    }
}

TEST_F(ReaderScreens, GiveTheChipsLinesForLettersThatTheCameraMistook) {
    begin();
    readPage();
    auto lines = passportLines();
    lines[0].replace(5, 8, "ERICSSON");
    readChip(documentWith(lines));
    EXPECT_EQ(nlohmann::json::parse(network->requests.back().request.body)["page"]["lines"], nlohmann::json(lines));
    proxyAnswers(accepted());
    EXPECT_EQ(answer(), "page and chip");
}

TEST_F(ReaderScreens, TakeTypedValuesAsTheWayOut) {
    begin();
    tap("aimType");
    EXPECT_FALSE(camera->isOn());
    tap("typeContinue");
    EXPECT_TRUE(sees("The document number has letters and digits only."));
    typeValues();
    EXPECT_EQ(chip->order.key.documentNumber, "L898902C3");
    EXPECT_EQ(chip->order.key.dateOfBirth, "740812");
    EXPECT_EQ(chip->order.key.dateOfExpiry, "120415");
    readChip(documentWith(passportLines()));
    EXPECT_FALSE(nlohmann::json::parse(network->requests.back().request.body).contains("page"));
    proxyAnswers(accepted());
    EXPECT_EQ(answer(), "chip");
}

TEST_F(ReaderScreens, LetAPersonLeaveAtEveryStep) {
    flow.shouldShowDocumentSelection = true;
    flow.shouldShowVIZResult = true;
    flow.shouldShowNFCResult = true;
    const std::function<void()> steps[] = {
        [] {},
        [this] { tap("choosePassport"); },
        [this] { tap("instructionsContinue"); },
        [this] { readPage(); },
        [this] { tap("pageResultContinue"); },
        [this] { readChip(std::unexpected{ChipFailure::takenAway}); },
        [this] { tap("failureRetry"); },
        [this] { readChip(documentWith(passportLines())); },
        [this] { tap("chipResultContinue"); },
        [this] { proxyAnswers(std::unexpected{platform::UrlError{.kind = UrlErrorKind::timedOut, .text = {}}}); },
    };
    constexpr std::size_t pageKnown = 3;
    for (std::size_t last = 0; last < std::size(steps); ++last) {
        for (const bool byHost : {false, true}) {
            showToCamera(table);
            begin(/*withInstructions=*/true);
            for (std::size_t i = 0; i <= last; ++i) {
                steps[i]();
            }
            SCOPED_TRACE(person.screenInWords());
            if (byHost) {
                host->dismiss(/*animated=*/false);
            } else {
                tap("readerClose");
            }
            EXPECT_EQ(answer(), failure(FailureReason::userCancelled, last >= pageKnown));
            EXPECT_FALSE(camera->isOn());
            EXPECT_FALSE(chip && last < 7 && !chip->isStopped && last != 5);
            if (!network->requests.empty()) {
                EXPECT_FALSE(network->requests.back().isWanted());
            }
            clock_->advance(1h);
            settle();
            EXPECT_EQ(heard.size(), 1U);
        }
    }
}

TEST_F(ReaderScreens, GoBackOnePageAndFromTheFirstOutOfTheReading) {
    begin();
    tap("aimType");
    tap("readerBack");
    EXPECT_TRUE(sees("Show the page to the camera"));
    readPage();
    tap("readerBack");
    EXPECT_TRUE(chip->isStopped);
    EXPECT_TRUE(becomes([this] { return person.sees("Lay the document on the reader"); }))
        << "the page is still before the camera";
    readChip(std::unexpected{ChipFailure::noChip});
    showToCamera(table);
    tap("readerBack");
    tap("readerBack");
    EXPECT_EQ(answer(), failure(FailureReason::backNavigation, true));
}

TEST_F(ReaderScreens, HelpWhereTheCameraSeesNothingOrTheWrongThing) {
    flow.allowedDocumentTypes = {DocumentType::passport};
    showToCamera(darkness);
    begin();
    EXPECT_TRUE(becomes([this] { return person.sees("It is dark here."); }));
    showToCamera(table);
    EXPECT_TRUE(becomes([this] { return person.sees("Keep the page flat"); }));
    clock_->advance(20s);
    EXPECT_TRUE(becomes([this] { return person.sees("You can also type the values by hand."); }));
    readPage(card);
    EXPECT_TRUE(sees("This is a document of another kind"));
    showToCamera(table);
    tap("failureAnother");
    EXPECT_TRUE(sees("Show the page to the camera"));
    readPage(card);
    tap("failureEnd");
    EXPECT_EQ(answer(), failure(FailureReason::wrongDocumentType));
    // The chip tells what a person's typing cannot.
    begin();
    tap("aimType");
    typeValues();
    readChip(documentWith(cardLines()));
    tap("failureEnd");
    EXPECT_EQ(answer(), failure(FailureReason::wrongDocumentType));
}

TEST_F(ReaderScreens, LeadToTypingWhereThereIsNoCamera) {
    camera->setConnected(false);
    begin();
    EXPECT_TRUE(sees("There is no camera."));
    tap("readerBack");
    EXPECT_EQ(answer(), failure(FailureReason::backNavigation));
    camera->setConnected(true);
    camera->setRefusal(simulator::Camera::Refusal::opening);
    begin();
    EXPECT_TRUE(sees("The camera may not be used."));
    tap("readerClose");
    EXPECT_EQ(answer(), failure(FailureReason::cameraPermissionDenied));
    begin();
    camera->setRefusal(simulator::Camera::Refusal::none);
    tap("typeAim");
    EXPECT_TRUE(sees("Show the page to the camera"));
    tap("readerClose");
    EXPECT_EQ(answer(), failure(FailureReason::userCancelled));
    hasEyes = false;
    begin();
    EXPECT_TRUE(sees("Type the values"));
    EXPECT_FALSE(sees("Use the camera"));
    typeValues();
    tap("readerClose");
    EXPECT_EQ(answer(), failure(FailureReason::userCancelled));
}

TEST_F(ReaderScreens, EndWhenThePersonIsGone) {
    begin();
    clock_->advance(299s);
    settle();
    EXPECT_TRUE(heard.empty());
    tap("aimType");
    clock_->advance(299s);
    type("typeDocumentNumber", "L");
    clock_->advance(299s);
    settle();
    EXPECT_TRUE(heard.empty());
    clock_->advance(1s);
    EXPECT_EQ(answer(), failure(FailureReason::vizCaptureTimeout));
    begin();
    readPage();
    readChip(std::unexpected{ChipFailure::noChip});
    clock_->advance(300s);
    EXPECT_EQ(answer(), failure(FailureReason::backgroundTimeout, true));
}

TEST_F(ReaderScreens, NeitherHearNorAskAReadingThatWasGivenUp) {
    begin();
    readPage();
    const auto former = chip;
    showToCamera(table);
    tap("readerBack");
    EXPECT_TRUE(former->isStopped);
    former->tell({.step = ChipProgress::Step::opening});
    const std::expected<reader::ChipDocument, reader::ChipFailure> late = documentWith(passportLines());
    former->end(late);
    settle();
    EXPECT_TRUE(sees("Show the page to the camera"));
    EXPECT_TRUE(network->requests.empty());
}

/// A bundle with the host's words for a text, and with a colour.
class HostsWords final : public platform::Bundle {
public:
    std::optional<std::string> bundleIdentifier() const override { return {}; }

    std::optional<std::string> infoText(std::string_view /*key*/) const override { return {}; }

    std::optional<std::filesystem::path> pathForResource(std::string_view, std::string_view) const override {
        return {};
    }

    std::optional<platform::PropertyValue> propertyList(std::string_view /*name*/) const override { return {}; }

    std::string localizedString(std::string_view key, std::string_view table) const override {
        return key == "Type the values" && table == "Reader" ? "Werte eingeben" : std::string{key};
    }

    std::optional<platform::Color> color(std::string_view name) const override {
        return name == "Kivo.Background" ? std::optional{platform::Color::white(0.9)} : std::nullopt;
    }
};

TEST_F(ReaderScreens, HaveTheHostsWordsAndLooks) {
    flow.uiResources = std::make_shared<platform::readid::UIResources>();
    flow.uiResources->customBundle = std::make_shared<HostsWords>();
    flow.uiResources->customStringTableName = "Reader";
    flow.uiResources->buttonHeight = 61;
    flow.uiResources->buttonCornerRadius = 9;
    flow.uiResources->titleFont = platform::Font{.name = "Karbon", .pointSize = 31};
    flow.uiResources->isDynamicTypeEnabled = true;
    hasEyes = false;
    begin();
    EXPECT_TRUE(sees("Werte eingeben"));
    EXPECT_TRUE(sees("Continue")) << "the host's table lacks the text";
    EXPECT_EQ(window_->visibleViewController()->view()->backgroundColor(), platform::Color::white(0.9));
    EXPECT_TRUE(window_->find<platform::Label>("typeTitle")->textColor().dark) << "the reader's own colour";
    window_->layoutIfNeeded();
    const auto button = window_->find<platform::Button>("typeContinue");
    EXPECT_NEAR(button->bounds().size.height, 61, 0.01);
    EXPECT_EQ(button->layer().cornerRadius, 9);
    const auto title = window_->find<platform::Label>("typeTitle");
    EXPECT_EQ(title->font().name, "Karbon");
    window_->setPreferredContentSizeCategory(platform::ContentSizeCategory::accessibilityLarge);
    EXPECT_GT(title->shownFont().pointSize, 31);
    EXPECT_EQ(window_->find("typeDateOfBirth")->accessibilityLabel(), "Date of birth (day, month, year)");
}

} // namespace
} // namespace kivo::test
