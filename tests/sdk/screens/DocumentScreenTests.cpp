#include "Configuration/environment/SdkBundle.hpp"
#include "Configuration/logging/Settings.hpp"
#include "NetworkManager/NetworkManager.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"
#include "support/HostScreenFixture.hpp"
#include "support/MemoryKeychain.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <kivo/ReadIDUIResourcesWrapper.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <gmock/gmock.h>

#include <filesystem>
#include <vector>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using namespace platform::readid;
using enum ResponseCode;
using platform::UrlErrorKind;
using testing::ElementsAre;
using testing::IsEmpty;
using Heard = std::vector<std::string>;

/// The vendor's library in the test's hands: it keeps what it is given.
class Vendor final : public platform::ReadID {
public:
    std::optional<ReadIDError> refusal;
    std::shared_ptr<NFCWithAccessControlFlow> flow;
    std::function<void(ReadIDResult)> handler;

    std::expected<void, ReadIDError> identify(const std::shared_ptr<platform::ViewController>& /*from*/,
                                              platform::ModalPresentationStyle style,
                                              const std::shared_ptr<NFCWithAccessControlFlow>& given,
                                              std::function<void(ReadIDResult)> then) override {
        EXPECT_EQ(style, platform::ModalPresentationStyle::fullScreen);
        flow = given;
        if (refusal) {
            return std::unexpected{*refusal};
        }
        handler = std::move(then);
        return {};
    }
};

struct VendorSession final : ReadIDSession {
    int finished = 0;

    std::string sessionId() const override { return "R1"; }

    void finish(std::function<void()> completionHandler) override {
        ++finished;
        completionHandler();
    }
};

struct Reports final : AuthMenuVCDelegate {
    Heard heard;

    void documentFlowDidComplete(IdvOutcome result) override { heard.push_back(said(result)); }

    void ocrFlowDidComplete(IdvOutcome result) override { heard.push_back("ID scan " + said(result)); }

    static std::string said(const IdvOutcome& result) {
        return std::string{result ? IdvEventsHelper::eventName((*result)->responseType()) : name(result.error())};
    }
};

/// Made in place: GCC 12 takes a moved variant for uninitialised under the sanitizers.
template <class Value>
ReadIDResult success(const Value& value) {
    return ReadIDResult{std::in_place, std::in_place_type<Value>, value};
}

constexpr auto biodata = R"("biodata-proxy":"https://proxy","biodata-access-key":"A","biodata-encrypt-key":"E",)"
                         R"("biodata-endpoint":"https://notice")";

/// A host with a joined session, a network that the test answers for, and no library that reads documents.
class DocumentScreenAlone : public test::HostScreenFixture {
protected:
    DocumentScreenAlone() {
        platform::Services services;
        services.urlSessions = network;
        services.keychain = std::make_shared<test::MemoryKeychain>();
        services.reachability = std::make_shared<simulator::Reachability>();
        platform::install(services);
    }

    void joinWith(const std::string& list, const std::string& idpBiodata = biodata) {
        storeJoinAnswer(R"({"response-type":"data","tid":"T1","app-config":{"app-doclist":")" + list +
                        R"("},"idp-config":{"update-endpoint":"https://update"},"idp-biodata":{)" + idpBiodata + "}}");
        Settings::shared().shouldApplyRetryLimit = true;
        NetworkManager::shared().retryLimit = 5;
        UIStateManager::shared().docAuthState = DocAuthStatus::docAuthFailedOrInitialized;
        network->requests.clear();
    }

    std::shared_ptr<AuthMenuVC> shown(const std::shared_ptr<ThemeCustomization>& theme = nullptr) {
        auto screen = makeScreen<AuthMenuVC>("AuthMenuVCID");
        screen->delegate = reports;
        screen->themeObj = theme;
        reports->heard.clear();
        vendor->handler = nullptr;
        push(screen);
        return screen;
    }

    /// The screen with a reading under way: the passport chosen from the list or, without one, begun by itself.
    std::shared_ptr<AuthMenuVC> reading(const std::string& list, const std::string& idpBiodata = biodata) {
        joinWith(list, idpBiodata);
        auto screen = shown();
        if (list == "true") {
            choose(*screen, 1);
        } else {
            advance(100ms);
        }
        return screen;
    }

    static void choose(AuthMenuVC& screen, int tag) { EXPECT_TRUE(screen.view()->viewWithTag(tag)->touch()); }

    void chipWasRead() const { vendor->handler(success(NFCOnly{.nfc = {.readIDSession = vendorSession}})); }

    /// What the retry notices said, in order.
    Heard attempts() const {
        Heard texts;
        for (const auto& each : network->requests) {
            if (each.request.url == "https://update") {
                texts.push_back(each.request.body);
            }
        }
        return texts;
    }

    bool isOnTop(const std::shared_ptr<AuthMenuVC>& screen) const { return navigation->topViewController() == screen; }

    bool hasOverlay() const { return navigation->view()->viewWithTag(999) != nullptr; }

    /// What was heard before a delay of that length ends, and right then.
    void expectHeardAfter(std::chrono::milliseconds delay, const Heard& heard) {
        if (delay > 0ms) {
            advance(delay - 1ms);
            EXPECT_THAT(reports->heard, IsEmpty());
            advance(1ms);
        }
        EXPECT_EQ(reports->heard, heard);
    }

    std::shared_ptr<Vendor> vendor = std::make_shared<Vendor>();
    std::shared_ptr<VendorSession> vendorSession = std::make_shared<VendorSession>();
    std::shared_ptr<test::ScriptedUrlSessions> network = std::make_shared<test::ScriptedUrlSessions>();
    std::shared_ptr<Reports> reports = std::make_shared<Reports>();
};

class DocumentScreen : public DocumentScreenAlone {
protected:
    DocumentScreen() {
        platform::Services services;
        services.readID = vendor;
        platform::install(services);
    }
};

TEST_F(DocumentScreen, ReportsAFailedReadingAndStaysOnlyWhereDocumentsAreListed) {
    struct Row {
        FailureReason reason;
        ResponseCode listed;
        ResponseCode unlisted;
    };

    using enum FailureReason;
    const Row rows[] = {
        {backgroundTimeout, BACKGROUND_TIMEOUT, BACKGROUND_TIMEOUT},
        {sessionExpired, SESSION_EXPIRED, SESSION_EXPIRED},
        {authorisationError, AUTHORISATION_ERROR, AUTHORISATION_ERROR},
        {serverSessionError, SERVER_SESSION_ERROR, SERVER_SESSION_ERROR},
        {sslError, SSL_ERROR, SSL_ERROR},
        {nfcAccessControlError, NFC_ACCESS_CONTROL_ERROR, NFC_ACCESS_CONTROL_ERROR},
        {connectionError, CONNECTION_ERROR, CONNECTION_ERROR},
        {tooManyRequestsError, TOO_MANY_REQUESTS, TOO_MANY_REQUESTS},
        {nfcError, NFC_ERROR, NFC_ERROR},
        {userCancelled, USER_CANCELLED, CANCELLED_BY_USER},
        {cameraPermissionDenied, CAMERA_PERMISSION_DENIED, CAMERA_PERMISSION_DENIED},
        {noChip, NO_CHIP, NO_CHIP},
        {unsupportedDocument, UNSUPPORTED_DOCUMENT, UNSUPPORTED_DOCUMENT},
        {backNavigation, BACK_NAVIGATION, CANCELLED_BY_USER},
        {wrongDocumentType, WRONG_DOCUMENT_TYPE, WRONG_DOCUMENT_TYPE},
        {vizCaptureTimeout, VIZ_CAPTURE_TIMEOUT, VIZ_CAPTURE_TIMEOUT},
        {other, UNKNOWN_ERROR, UNKNOWN_ERROR},
    };
    for (const auto& row : rows) {
        for (const bool listed : {true, false}) {
            SCOPED_TRACE(std::string{name(row.listed)} + (listed ? " with a list" : " without"));
            auto screen = reading(listed ? "true" : "false");
            vendor->handler(std::unexpected{Failure{.failureReason = row.reason}});
            EXPECT_THAT(reports->heard, ElementsAre(name(listed ? row.listed : row.unlisted)));
            EXPECT_THAT(attempts(), ElementsAre(testing::HasSubstr(":Attempts count decremented to 4")));
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

TEST_F(DocumentScreen, ReportsAReadingThatDoesNotBeginOrEndsStrangely) {
    using enum ReadIDError::Kind;
    const std::pair<std::optional<ReadIDError>, ResponseCode> rows[] = {
        {ReadIDError{.kind = invalidConfiguration, .message = "no key"}, INVALID_CONFIGURATION},
        {ReadIDError{.kind = nfcNotSupported}, NFC_NOT_SUPPORTED},
        {ReadIDError{.kind = other, .message = "busy"}, UNKNOWN_ERROR},
        {std::nullopt, UNKNOWN_ERROR},
    };
    for (const auto& [refusal, code] : rows) {
        for (const auto* list : {"true", "TRUE"}) {
            SCOPED_TRACE(std::string{name(code)} + " with the list " + list);
            vendor->refusal = refusal;
            const auto screen = reading(list);
            if (!refusal) {
                vendor->handler(success(UnknownSuccess{}));
            }
            EXPECT_THAT(reports->heard, ElementsAre(name(code)));
            EXPECT_EQ(attempts().size(), refusal ? 0U : 1U) << "only a reading that began counts";
            advance(100ms);
            EXPECT_EQ(isOnTop(screen), list == std::string_view{"true"});
            navigation->popToViewController(host, false);
        }
    }
}

TEST_F(DocumentScreen, ChecksBeforeItReads) {
    struct Row {
        const char* what;
        std::string idpBiodata;
        std::int64_t attemptsLeft;
        Heard heard;
    };

    const Row rows[] = {
        {"no attempt left", biodata, 0, {"RETRY_LIMIT_REACHED"}},
        {"no attempt left and no settings", "", 0, {"RETRY_LIMIT_REACHED"}},
        {"no settings", "", 5, {"EMPTY_ACCESS_KEY"}},
        {"no proxy", R"("biodata-access-key":"A")", 5, {"EMPTY_BIODATA_PROXY"}},
        {"an empty proxy", R"("biodata-access-key":"A","biodata-proxy":"")", 5, {"EMPTY_BIODATA_PROXY"}},
        {"all there", biodata, 1, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        joinWith("true", row.idpBiodata);
        NetworkManager::shared().retryLimit = row.attemptsLeft;
        const auto screen = shown();
        choose(*screen, 1);
        EXPECT_EQ(reports->heard, row.heard);
        EXPECT_EQ(vendor->handler != nullptr, row.heard.empty());
        const auto alert = std::dynamic_pointer_cast<platform::AlertController>(window->visibleViewController());
        ASSERT_EQ(alert != nullptr, row.attemptsLeft == 0);
        if (alert) {
            EXPECT_EQ(alert->title() + ", " + alert->message(), "Retry_Limit_Title, Retry_Limit_Message");
            alert->choose(0);
            settle();
        }
        EXPECT_TRUE(isOnTop(screen));
        pop();
    }
}

TEST_F(DocumentScreenAlone, SaysThatThereIsNoLibraryAndStays) {
    for (const auto* list : {"true", "false"}) {
        joinWith(list);
        const auto screen = shown();
        if (list == std::string_view{"true"}) {
            choose(*screen, 2);
        } else {
            advance(100ms);
        }
        expectHeardAfter(100ms, {"READID_INITIALIZATION_FAILED"});
        advance(1s);
        EXPECT_TRUE(isOnTop(screen));
        pop();
    }
}

TEST_F(DocumentScreen, TellsTheServiceOfAChipAndReportsItsAnswer) {
    struct Row {
        const char* what;
        platform::UrlOutcome answer;
        std::chrono::milliseconds delay;
        std::string heard;
    };

    const auto answer = [](std::string body, int status = 200) {
        return platform::UrlOutcome{{.status = status, .headers = {}, .body = std::move(body)}};
    };
    const auto error = [](UrlErrorKind kind) { return platform::UrlOutcome{std::unexpect, kind, "no"}; };
    const auto refusal = [&](const std::string& code) {
        return answer(R"({"response-type":"fail","response-code":")" + code + R"("})");
    };
    const Row rows[] = {
        {"accepted", answer(R"({"response-type":"data"})"), 300ms, "DOCUMENT_SCAN"},
        {"no document at all", answer("<html>"), 300ms, "DOCUMENT_SCAN"},
        {"refused", refusal("STATUS_BAD_BIODATA_EXPIRY"), 300ms, "STATUS_BAD_BIODATA_EXPIRY"},
        {"refused for nothing known", refusal("NO_SUCH_NAME"), 300ms, "UNKNOWN_ERROR"},
        {"time-out", error(UrlErrorKind::timedOut), 100ms, "SERVER_ERROR"},
        {"500", answer("", 500), 100ms, "SERVER_ERROR"},
        {"another server than the pinned one", error(UrlErrorKind::pinMismatch), 100ms,
         "UNSECURE_SERVER_PINNING_FAILED"},
    };
    for (const auto& row : rows) {
        for (const auto* list : {"true", "false"}) {
            SCOPED_TRACE(std::string{row.what} + " with the list " + list);
            const auto screen = reading(list);
            vendorSession->finished = 0;
            chipWasRead();
            settle();
            EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthSuccess) << "before the answer";
            EXPECT_TRUE(hasOverlay());
            ASSERT_EQ(network->requests.size(), 2U);
            const auto notice = network->requests[0];
            EXPECT_EQ(notice.request.url, "https://notice");
            EXPECT_EQ(notice.request.body, R"({"opaqueId":"T1","sessionId":"R1"})");
            EXPECT_EQ(attempts().size(), 1U);
            notice.answer(row.answer);
            settle();
            expectHeardAfter(row.delay, {row.heard});
            EXPECT_EQ(vendorSession->finished, row.heard == "DOCUMENT_SCAN" ? 1 : 0);
            settle();
            advance(200ms);
            EXPECT_FALSE(hasOverlay());
            EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthSuccess);
            EXPECT_TRUE(isOnTop(screen)) << "what comes next is not for the screen to say";
            pop();
        }
    }
}

TEST_F(DocumentScreen, TakesAChipWithOrWithoutAPageAndNothingFromAPageAlone) {
    const VIZResult page{.mrzData = {.mrz = {.lines = {"P<SECRET", "LINE<TWO"}}}};

    struct Row {
        const char* what;
        SuccessValue value;
        std::optional<std::string> sessionInNotice;
    };

    const Row rows[] = {
        {"page and chip", VIZNFC{.viz = page, .nfc = {.readIDSession = vendorSession}}, "R1"},
        {"a chip without a session", NFCOnly{}, ""},
        {"a page", VIZOnly{.viz = page}, std::nullopt},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        reading("true");
        vendor->handler(row.value);
        settle();
        EXPECT_EQ(attempts().size(), 1U);
        EXPECT_EQ(network->requests.size(), row.sessionInNotice ? 2U : 1U);
        if (row.sessionInNotice) {
            EXPECT_EQ(network->requests[0].request.body,
                      R"({"opaqueId":"T1","sessionId":")" + *row.sessionInNotice + R"("})");
            network->requests[0].answer("{}");
            settle();
        }
        advance(300ms);
        EXPECT_EQ(reports->heard, row.sessionInNotice ? Heard{"DOCUMENT_SCAN"} : Heard{});
        pop();
    }
}

TEST_F(DocumentScreen, NeedsAnAddressForTheNotice) {
    const auto screen = reading("true", R"("biodata-proxy":"https://proxy","biodata-access-key":"A")");
    chipWasRead();
    settle();
    EXPECT_TRUE(hasOverlay());
    expectHeardAfter(100ms, {"INVALID_BIODATA_ENDPOINT"});
    settle();
    advance(200ms);
    EXPECT_FALSE(hasOverlay());
    EXPECT_EQ(vendorSession->finished, 0);
    EXPECT_TRUE(isOnTop(screen));
}

TEST_F(DocumentScreen, TakesItsOverlayAlongWhenTheHostTakesItAway) {
    reading("true");
    chipWasRead();
    settle();
    EXPECT_TRUE(hasOverlay());
    pop();
    advance(200ms);
    EXPECT_FALSE(hasOverlay());
    network->requests[0].answer("{}");
    settle();
    expectHeardAfter(300ms, {"DOCUMENT_SCAN"});
}

TEST_F(DocumentScreen, CoversTheScreenUnlessTheThemeForbidsIt) {
    joinWith("true");
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->enableActivityIndicator = false;
    const auto screen = shown(theme);
    choose(*screen, 1);
    chipWasRead();
    settle();
    EXPECT_FALSE(hasOverlay());
}

TEST_F(DocumentScreen, HandsTheSessionsSettingsToTheLibrary) {
    using enum DocumentType;

    struct Row {
        const char* list;
        int tag;
        std::vector<DocumentType> types;
    };

    for (const auto& row : {Row{"false", 0, {passport, identityCardTD2, identityCardTD1}}, Row{"true", 1, {passport}},
                            Row{"true", 2, {identityCardTD1, identityCardTD2}}}) {
        joinWith(row.list);
        const auto screen = shown();
        if (row.tag > 0) {
            choose(*screen, row.tag);
        } else {
            advance(99ms);
            EXPECT_EQ(vendor->handler, nullptr);
            advance(1ms);
        }
        ASSERT_NE(vendor->handler, nullptr);
        EXPECT_EQ(vendor->flow->allowedDocumentTypes, row.types);
        pop();
    }
    const auto& flow = *vendor->flow;
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

    joinWith("true", R"("biodata-proxy":"https://proxy","biodata-access-key":"A")");
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->allowNFCSkipReadingAfterAttempts = 7;
    theme->primaryButtonCornerRadius = 3;
    theme->primaryButtonFont = platform::Font::system(21);
    ReadIDUIResourcesWrapper{}.setCustomStringTableName("Texts");
    choose(*shown(theme), 1);
    EXPECT_EQ(vendor->flow->allowSkipReadingAfterAttempts, 7);
    EXPECT_THAT(vendor->flow->applicationLevelEncryptionPins, IsEmpty());
    EXPECT_EQ(vendor->flow->uiResources->customBundle, theme->appBundle);
    EXPECT_EQ(vendor->flow->uiResources->customStringTableName, "Texts");
    EXPECT_EQ(vendor->flow->uiResources->buttonCornerRadius, 3);
    EXPECT_EQ(vendor->flow->uiResources->buttonFont, theme->primaryButtonFont);
}

TEST_F(DocumentScreen, ShowsTheChoiceWhileADocumentIsListedAndStillToBeRead) {
    using enum DocAuthStatus;
    using enum DocumentListConfigurationStatus;

    struct Row {
        const char* list;
        DocAuthStatus state;
        bool isHidden;
        DocumentListConfigurationStatus status;
    };

    const auto theme = std::make_shared<ThemeCustomization>();
    theme->zorCloseButtonAppearance->closeButtonIsHidden = false;
    for (const auto& row :
         {Row{"true", docAuthFailedOrInitialized, false, available}, Row{"true", docAuthSuccess, true, available},
          Row{"True", docAuthFailedOrInitialized, true, notAvailable}, Row{"", docAuthSuccess, true, notAvailable}}) {
        SCOPED_TRACE(row.list);
        joinWith(row.list);
        UIStateManager::shared().docAuthState = row.state;
        const auto screen = shown(theme);
        for (const auto* name : {"optionsContainerStackView", "titleInfoLabel", "processDescriptionTextView",
                                 "scanPassportLabel", "scanResidentCardLabel", "closeButton"}) {
            EXPECT_EQ(outlet<platform::View>(*screen, name)->isHidden(), row.isHidden) << name;
        }
        EXPECT_TRUE(outlet<platform::View>(*screen, "otherCardContainerView")->isHidden());
        EXPECT_EQ(ThemeCustomization::documentListConfigurationStatus(), row.status);
        pop();
    }
}

TEST_F(DocumentScreen, ClosesAtOnceAndReportsATenthOfASecondLater) {
    joinWith("true");
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->zorCloseButtonAppearance->closeButtonIsHidden = false;
    outlet<platform::Button>(*shown(theme), "closeButton")->tap();
    EXPECT_EQ(navigation->topViewController(), host);
    expectHeardAfter(100ms, {"CANCELLED_BY_USER"});

    reports->heard.clear();
    const auto bare = std::make_shared<platform::ViewController>();
    window->setRootViewController(bare);
    auto screen = makeScreen<AuthMenuVC>("AuthMenuVCID");
    screen->delegate = reports;
    screen->themeObj = theme;
    bare->present(screen, false);
    settle();
    outlet<platform::Button>(*screen, "closeButton")->tap();
    settle();
    EXPECT_EQ(bare->presentedViewController(), nullptr);
    expectHeardAfter(100ms, {"CANCELLED_BY_USER"});
}

TEST_F(DocumentScreen, TakesItselfAwayFromWhereverItIs) {
    const auto bare = std::make_shared<platform::ViewController>();
    window->setRootViewController(bare);
    joinWith("false");
    const auto presented = makeScreen<AuthMenuVC>("AuthMenuVCID");
    bare->present(presented, false);
    settle();
    advance(100ms);
    vendor->handler(std::unexpected{Failure{.failureReason = FailureReason::noChip}});
    advance(100ms);
    EXPECT_EQ(bare->presentedViewController(), nullptr);

    window->setRootViewController(navigation);
    const auto pushed = reading("false");
    vendor->handler(std::unexpected{Failure{.failureReason = FailureReason::noChip}});
    const auto next = std::make_shared<platform::ViewController>();
    push(next);
    advance(100ms);
    EXPECT_THAT(navigation->viewControllers(), ElementsAre(host, next)) << "a screen that came in between stays";
}

TEST_F(DocumentScreen, PassesOnWhatTheIDScanScreenSays) {
    for (const bool hasLayout : {false, true}) {
        if (hasLayout) {
            std::filesystem::create_directory(folder.path() / "Host.bundle");
            std::filesystem::copy(*sdkBundle()->pathForResource("ZORFramework", "storyboard"),
                                  folder.path() / "Host.bundle");
        }
        joinWith("true");
        const auto theme = std::make_shared<ThemeCustomization>();
        const auto screen = shown(theme);
        outlet<platform::View>(*screen, "otherCardContainerView")->setHidden(false);
        choose(*screen, 3);
        advance(100ms);
        settle();
        if (!hasLayout) {
            EXPECT_EQ(reports->heard, Heard{"ID scan UNKNOWN_ERROR"});
            pop();
            continue;
        }
        const auto scan = std::dynamic_pointer_cast<OCRScanInitializeVC>(window->visibleViewController());
        ASSERT_NE(scan, nullptr);
        EXPECT_EQ(scan->themeObj, theme);
        const auto delegate = scan->delegate.lock();
        ASSERT_NE(delegate, nullptr);
        reports->heard.clear();
        delegate->ocrScanDidComplete(std::make_shared<IdvResult>("", IdvEvents::OCR_SCAN));
        EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthSuccess);
        delegate->ocrScanDidComplete(std::unexpected{OCR_SCAN_FAILED});
        EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthFailedOrInitialized);
        EXPECT_EQ(reports->heard, (Heard{"ID scan OCR_SCAN", "ID scan OCR_SCAN_FAILED"}));
    }
}

TEST_F(DocumentScreen, IsNotHeldByTheLibraryAndHearsNothingWhenGone) {
    std::weak_ptr<AuthMenuVC> weak = reading("true");
    pop();
    EXPECT_TRUE(weak.expired());
    chipWasRead();
    settle();
    EXPECT_THAT(network->requests, IsEmpty());
    EXPECT_THAT(reports->heard, IsEmpty());
}

TEST_F(DocumentScreen, KeepsWhatWasReadOutOfTheLog) {
    KivoSDK::setLogLevel(LogLevel::debug);
    testing::internal::CaptureStdout();
    reading("true");
    vendor->handler(std::unexpected{Failure{.failureReason = FailureReason::userCancelled,
                                            .viz = VIZResult{.mrzData = {.mrz = {.lines = {"P<SECRET"}}}}}});
    const auto log = testing::internal::GetCapturedStdout();
    EXPECT_THAT(log, testing::HasSubstr("MRZ: 1 lines"));
    EXPECT_THAT(log, testing::Not(testing::HasSubstr("SECRET")));
    EXPECT_THAT(log, testing::HasSubstr("Proceeding with Allowed Documents [passport]"));
}

TEST_F(DocumentScreen, SizesAndWordsItsTextsAfterTheTheme) {
    joinWith("true");
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->selectIDTitleText = "Which document?";
    theme->selectIDPassportOptionText = "My passport";
    theme->documentOptionsTitleFont = platform::Font::system(20);
    fonts->installed = {"Karbon-Medium"};
    window->setPreferredContentSizeCategory(platform::ContentSizeCategory::extraSmall);
    const auto themed = shown(theme);
    EXPECT_EQ(outlet<platform::Label>(*themed, "titleInfoLabel")->text(), "Which document?");
    EXPECT_EQ(outlet<platform::Label>(*themed, "scanResidentCardLabel")->text(), "Identity card") << "the storyboard's";
    const auto option = outlet<platform::Label>(*themed, "scanPassportLabel");
    EXPECT_EQ(option->text(), "My passport");
    EXPECT_EQ(themed->view()->viewWithTag(1)->accessibilityLabel(), "My passport");
    EXPECT_NEAR(option->shownFont().pointSize, 20.0 * 16 / 17, 0.51) << "no smaller than the theme's limit";
    pop();
    const auto plain = shown();
    EXPECT_EQ(outlet<platform::Label>(*plain, "titleInfoLabel")->shownFont().name, "Karbon-Medium");
    EXPECT_NEAR(outlet<platform::Label>(*plain, "scanPassportLabel")->shownFont().pointSize, 14, 0.51);
}

TEST(ReadIDResources, AreOneObjectForAllWrappers) {
    const auto& shared = ThemeCustomization::passportScanViewCustomization();
    ReadIDUIResourcesWrapper wrapper;
    EXPECT_EQ(wrapper.customStringTableName(), "");
    EXPECT_EQ(wrapper.titleFont(), platform::Font{});
    wrapper.setCustomStringTableName("Texts");
    wrapper.setTitleFont(platform::Font::system(30));
    wrapper.setTextFont(platform::Font::system(11));
    wrapper.setButtonFont(platform::Font::system(12));
    wrapper.setTextSize(13);
    wrapper.setButtonTextSize(14);
    wrapper.setButtonHeight(15);
    wrapper.setIsDynamicTypeEnabled(true);
    const ReadIDUIResourcesWrapper another;
    EXPECT_EQ(another.customStringTableName(), "Texts");
    EXPECT_EQ(another.titleFont().pointSize, 30);
    EXPECT_EQ(shared->textFont->pointSize, 11);
    EXPECT_EQ(shared->buttonFont->pointSize, 12);
    EXPECT_EQ(shared->textSize, 13);
    EXPECT_EQ(shared->buttonTextSize, 14);
    EXPECT_EQ(another.buttonHeight(), 15);
    EXPECT_TRUE(shared->isDynamicTypeEnabled);
    wrapper.setCustomStringTableName("");
    EXPECT_FALSE(shared->customStringTableName.has_value());
}

} // namespace
} // namespace kivo
