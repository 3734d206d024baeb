#include "NetworkManager/Attempts.hpp"
#include "support/DocumentScreens.hpp"

#include <kivo/ReadIDUIResourcesWrapper.hpp>
#include <kivo/platform/ui/AlertController.hpp>

    namespace kivo {

    namespace {

    using namespace std::chrono_literals;
    using namespace platform::readid;
    using enum ResponseCode;
    using platform::UrlErrorKind;
    using test::biodata;
    using test::DocumentScreen;
    using test::DocumentScreenAlone;
    using test::Heard;
    using test::success;
    using testing::ElementsAre;
    using testing::IsEmpty;

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
            Attempts::shared().setRetryLimit(row.attemptsLeft);
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
            testing::internal::CaptureStdout();
            if (list == std::string_view{"true"}) {
                choose(*screen, 2);
            } else {
                advance(100ms);
            }
            EXPECT_THAT(testing::internal::GetCapturedStdout(),
                        testing::ContainsRegex("Proceeding with Allowed Documents \n"));
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

    TEST_F(DocumentScreen, HandsTheSessionsSettingsToTheLibrary) {
        using enum DocumentType;

        struct Row {
            const char* list;
            int tag;
            std::vector<DocumentType> types;
        };

        for (const auto& row : {Row{"false", 0, {passport, identityCardTD2, identityCardTD1}},
                                Row{"true", 1, {passport}}, Row{"true", 2, {identityCardTD1, identityCardTD2}}}) {
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

    } // namespace
} // namespace kivo
