#include "support/VendorScreens.hpp"

#include <kivo/ReadIDUIResourcesWrapper.hpp>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using namespace platform::readid;
using enum ResponseCode;
using platform::UrlErrorKind;
using test::fails;
using test::says;
using test::Texts;
using test::VendorSession;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto allListed = "true";
constexpr auto noneListed = "false";

class DocumentReading : public test::VendorScreens {
protected:
    DocumentReading() { limitAttempts(true); }

    /// The screen with a reading under way: the passport chosen from the list or, without a list, begun by itself.
    std::shared_ptr<AuthMenuVC> reading(const test::Joined& joined, const Theme& theme = nullptr) {
        join(joined);
        reader->handler = nullptr;
        auto screen = pushed<AuthMenuVC>(theme);
        if (joined.documentList == allListed) {
            choose(*screen, 1);
        } else {
            advance(100ms);
        }
        if (reader->handler) {
            ears->restart();
        }
        return screen;
    }

    static void choose(AuthMenuVC& screen, int tag) { EXPECT_TRUE(screen.view()->viewWithTag(tag)->touch()); }

    void readChip() {
        reader->succeed(NFCOnly{.nfc = {.readIDSession = vendorSession}});
        settle();
    }

    void readPageAndChip() {
        reader->succeed(VIZNFC{.viz = {}, .nfc = {.readIDSession = vendorSession}});
        settle();
    }

    std::shared_ptr<VendorSession> vendorSession = std::make_shared<VendorSession>();
};

TEST_F(DocumentReading, ReportsAFailureAndStaysOnlyWhereDocumentsAreListed) {
    using enum FailureReason;
    const std::pair<FailureReason, ResponseCode> rows[] = {
        {backgroundTimeout, BACKGROUND_TIMEOUT},
        {sessionExpired, SESSION_EXPIRED},
        {authorisationError, AUTHORISATION_ERROR},
        {serverSessionError, SERVER_SESSION_ERROR},
        {sslError, SSL_ERROR},
        {nfcAccessControlError, NFC_ACCESS_CONTROL_ERROR},
        {connectionError, CONNECTION_ERROR},
        {tooManyRequestsError, TOO_MANY_REQUESTS},
        {nfcError, NFC_ERROR},
        {userCancelled, USER_CANCELLED},
        {cameraPermissionDenied, CAMERA_PERMISSION_DENIED},
        {noChip, NO_CHIP},
        {unsupportedDocument, UNSUPPORTED_DOCUMENT},
        {backNavigation, BACK_NAVIGATION},
        {wrongDocumentType, WRONG_DOCUMENT_TYPE},
        {vizCaptureTimeout, VIZ_CAPTURE_TIMEOUT},
        {FailureReason::other, UNKNOWN_ERROR},
    };
    for (const auto& [reason, code] : rows) {
        for (const bool listed : {true, false}) {
            SCOPED_TRACE(std::string{name(code)} + (listed ? " with a list" : " without"));
            auto screen = reading({.documentList = listed ? allListed : noneListed});
            reader->fail(reason);
            const bool leaves = reason == userCancelled || reason == backNavigation;
            EXPECT_THAT(ears->heard, ElementsAre(name(leaves && !listed ? CANCELLED_BY_USER : code)));
            EXPECT_THAT(attempts(), ElementsAre(HasSubstr(":Attempts count decremented to 4")));
            advance(99ms);
            EXPECT_TRUE(isOnTop(screen));
            advance(1ms);
            EXPECT_EQ(isOnTop(screen), listed);
            const std::weak_ptr weak = screen;
            screen.reset();
            navigation->popToViewController(host, false);
            settle();
            EXPECT_TRUE(weak.expired());
        }
    }
}

TEST_F(DocumentReading, ReportsAReadingThatDoesNotBeginOrEndsStrangely) {
    using enum ReadIDError::Kind;
    const std::pair<std::optional<ReadIDError>, ResponseCode> rows[] = {
        {ReadIDError{.kind = invalidConfiguration, .message = "no key"}, INVALID_CONFIGURATION},
        {ReadIDError{.kind = nfcNotSupported}, NFC_NOT_SUPPORTED},
        {ReadIDError{.kind = other, .message = "busy"}, UNKNOWN_ERROR},
        {std::nullopt, UNKNOWN_ERROR},
    };
    for (const auto& [refusal, code] : rows) {
        for (const auto* list : {allListed, "TRUE"}) {
            SCOPED_TRACE(std::string{name(code)} + " with the list " + list);
            reader->refusal = refusal;
            const auto screen = reading({.documentList = list});
            if (!refusal) {
                reader->succeed(UnknownSuccess{});
            }
            EXPECT_THAT(ears->heard, ElementsAre(testing::StartsWith(std::string{name(code)})));
            EXPECT_EQ(attempts().size(), refusal ? 0U : 1U) << "only a reading that began counts";
            advance(100ms);
            EXPECT_EQ(isOnTop(screen), list == std::string_view{allListed});
            navigation->popToViewController(host, false);
        }
    }
}

TEST_F(DocumentReading, ChecksBeforeItReads) {
    const std::string usual = test::Joined{}.biodata;

    const struct {
        const char* what;
        const char* biodata;
        int attemptsLeft;
        Texts heard;
    } rows[] = {
        {"no attempt left", usual.c_str(), 0, {"RETRY_LIMIT_REACHED"}},
        {"no attempt left and no settings", "", 0, {"RETRY_LIMIT_REACHED"}},
        {"no settings", "", 5, {"EMPTY_ACCESS_KEY"}},
        {"no proxy", R"("biodata-access-key":"A")", 5, {"EMPTY_BIODATA_PROXY"}},
        {"an empty proxy", R"("biodata-access-key":"A","biodata-proxy":"")", 5, {"EMPTY_BIODATA_PROXY"}},
        {"all there", usual.c_str(), 1, {}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        join({.biodata = row.biodata});
        leaveAttempts(row.attemptsLeft);
        const auto screen = pushed<AuthMenuVC>();
        choose(*screen, 1);
        EXPECT_EQ(ears->heard, row.heard);
        EXPECT_EQ(reader->handler != nullptr, row.heard.empty());
        ASSERT_EQ(alert() != nullptr, row.attemptsLeft == 0);
        if (alert()) {
            EXPECT_EQ(alert()->title() + ", " + alert()->message(), "Retry_Limit_Title, Retry_Limit_Message");
            alert()->choose(0);
            settle();
        }
        EXPECT_TRUE(isOnTop(screen));
        pop();
    }
}

TEST_F(DocumentReading, TellsTheServiceOfAChipAndReportsItsAnswer) {
    const auto* const read = "DOCUMENT_SCAN after 300 ms";
    const auto* const failed = "SERVER_ERROR after 100 ms";
    const auto refuses = [](const std::string& code) {
        return says(R"({"response-type":"fail","response-code":")" + code + R"("})");
    };

    const struct {
        const char* what;
        platform::UrlOutcome answer;
        const char* heard;
    } rows[] = {
        {"accepted", says(R"({"response-type":"data"})"), read},
        {"no JSON document at all", says("<html>"), read},
        {"refused", refuses("STATUS_BAD_BIODATA_EXPIRY"), "STATUS_BAD_BIODATA_EXPIRY after 300 ms"},
        {"refused for nothing known", refuses("NO_SUCH_NAME"), "UNKNOWN_ERROR after 300 ms"},
        {"time-out", fails(UrlErrorKind::timedOut), failed},
        {"500", says("", 500), failed},
        {"not the pinned server", fails(UrlErrorKind::pinMismatch), "UNSECURE_SERVER_PINNING_FAILED after 100 ms"},
    };

    for (const auto& row : rows) {
        for (const auto* list : {allListed, noneListed}) {
            SCOPED_TRACE(std::string{row.what} + " with the list " + list);
            const auto screen = reading({.documentList = list});
            vendorSession->finished = 0;
            list == allListed ? readChip() : readPageAndChip();
            EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthSuccess) << "before the answer";
            EXPECT_TRUE(hasOverlay());
            ASSERT_EQ(network->requests.size(), 2U);
            EXPECT_EQ(network->requests[0].request.url, "https://notice");
            EXPECT_EQ(network->requests[0].request.body, R"({"opaqueId":"T1","sessionId":"R1"})");
            EXPECT_EQ(attempts().size(), 1U);
            network->requests[0].answer(row.answer);
            advance(1s);
            EXPECT_THAT(ears->heard, ElementsAre(row.heard));
            EXPECT_EQ(vendorSession->finished, row.heard == read ? 1 : 0);
            EXPECT_FALSE(hasOverlay());
            EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthSuccess);
            EXPECT_TRUE(isOnTop(screen)) << "what comes next is not for the screen to say";
            pop();
        }
    }
}

TEST_F(DocumentReading, TellsTheServiceOfAChipWithoutASessionAndNothingOfAPageAlone) {
    reading({});
    reader->succeed(NFCOnly{});
    settle();
    EXPECT_EQ(network->requests[0].request.body, R"({"opaqueId":"T1","sessionId":""})");

    reading({});
    reader->succeed(VIZOnly{.viz = {.mrzData = {.mrz = {.lines = {"P<SECRET", "LINE<TWO"}}}}});
    advance(1s);
    EXPECT_EQ(network->requests.size(), attempts().size()) << "no notice";
    EXPECT_EQ(attempts().size(), 1U);
    EXPECT_THAT(ears->heard, IsEmpty());
}

TEST_F(DocumentReading, CoversTheScreenUntilTheAnswerOrTheScreensEnd) {
    const auto theme = makeTheme();
    theme->enableActivityIndicator = false;
    reading({}, theme);
    readChip();
    EXPECT_FALSE(hasOverlay());

    reading({});
    readChip();
    EXPECT_TRUE(hasOverlay());
    pop();
    advance(200ms);
    EXPECT_FALSE(hasOverlay());
    ears->restart();
    network->requests[0].answer("{}");
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("DOCUMENT_SCAN after 300 ms"));

    const auto screen = reading({.biodata = R"("biodata-proxy":"https://proxy","biodata-access-key":"A")"});
    readChip();
    EXPECT_TRUE(hasOverlay());
    advance(1s);
    EXPECT_THAT(ears->heard, ElementsAre("INVALID_BIODATA_ENDPOINT after 100 ms")) << "without an address to notify";
    EXPECT_FALSE(hasOverlay());
    EXPECT_TRUE(isOnTop(screen));
}

TEST_F(DocumentReading, HandsTheSessionsSettingsToTheLibrary) {
    using enum DocumentType;

    struct Row {
        const char* list;
        int tag;
        std::vector<DocumentType> types;
    };

    for (const auto& row : {Row{noneListed, 0, {passport, identityCardTD2, identityCardTD1}},
                            Row{allListed, 1, {passport}}, Row{allListed, 2, {identityCardTD1, identityCardTD2}}}) {
        join({.documentList = row.list});
        reader->handler = nullptr;
        const auto screen = pushed<AuthMenuVC>();
        if (row.tag > 0) {
            choose(*screen, row.tag);
        } else {
            advance(99ms);
            EXPECT_EQ(reader->handler, nullptr);
            advance(1ms);
        }
        ASSERT_NE(reader->handler, nullptr);
        EXPECT_EQ(reader->flow->allowedDocumentTypes, row.types);
    }
    const auto& flow = *reader->flow;
    EXPECT_EQ(flow.baseUrl, "https://proxy");
    EXPECT_EQ(flow.accessKey, "A");
    EXPECT_THAT(flow.applicationLevelEncryptionPins, ElementsAre("E"));
    EXPECT_EQ(flow.instructionsPlayCount, 1);
    EXPECT_EQ(flow.allowSkipReadingAfterAttempts, 2);
    EXPECT_TRUE(flow.shouldUsePinning);
    EXPECT_FALSE(flow.shouldOnlyShowInstructionsOnFirstUse || flow.shouldShowDocumentSelection ||
                 flow.shouldShowVIZResult || flow.shouldShowNFCResult || flow.shouldPlayShutterSound);
    EXPECT_EQ(flow.nfcResultScreenConfiguration.nfcResultDataMode, NFCResultDataMode::none);
    EXPECT_EQ(flow.vizResultScreenConfiguration.vizResultDataMode, VIZResultDataMode::none);
    EXPECT_EQ(flow.uiResources, ThemeCustomization::passportScanViewCustomization());
    EXPECT_EQ(flow.uiResources->customBundle, nullptr) << "without a theme";
    EXPECT_EQ(flow.uiResources->textSize, 21) << "the vendor's own";

    const auto theme = makeTheme();
    theme->allowNFCSkipReadingAfterAttempts = 7;
    theme->primaryButtonCornerRadius = 3;
    theme->primaryButtonFont = platform::Font::system(21);
    ReadIDUIResourcesWrapper{}.setCustomStringTableName("Texts");
    reading({.biodata = R"("biodata-proxy":"https://proxy","biodata-access-key":"A")"}, theme);
    EXPECT_EQ(reader->flow->allowSkipReadingAfterAttempts, 7);
    EXPECT_THAT(reader->flow->applicationLevelEncryptionPins, IsEmpty());
    EXPECT_EQ(reader->flow->uiResources->customBundle, theme->appBundle);
    EXPECT_EQ(reader->flow->uiResources->customStringTableName, "Texts");
    EXPECT_EQ(reader->flow->uiResources->buttonCornerRadius, 3);
    EXPECT_EQ(reader->flow->uiResources->buttonFont, theme->primaryButtonFont);
}

TEST_F(DocumentReading, IsNotHeldByTheLibraryAndHearsNothingWhenGone) {
    const std::weak_ptr weak = reading({});
    pop();
    EXPECT_TRUE(weak.expired());
    readChip();
    EXPECT_THAT(network->requests, IsEmpty());
    EXPECT_THAT(ears->heard, IsEmpty());
}

} // namespace
} // namespace kivo
