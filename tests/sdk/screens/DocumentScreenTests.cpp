#include "support/VendorScreens.hpp"

namespace kivo {
namespace {

using namespace std::chrono_literals;
using test::Texts;
using testing::ElementsAre;

using DocumentScreen = test::VendorScreens;

TEST_F(DocumentScreen, ShowsTheChoiceWhileADocumentIsListedAndStillToBeRead) {
    using enum DocAuthStatus;
    using enum DocumentListConfigurationStatus;

    struct Row {
        const char* list;
        DocAuthStatus state;
        bool isHidden;
        DocumentListConfigurationStatus status;
    };

    for (const auto& row :
         {Row{"true", docAuthFailedOrInitialized, false, available}, Row{"true", docAuthSuccess, true, available},
          Row{"True", docAuthFailedOrInitialized, true, notAvailable}, Row{"", docAuthSuccess, true, notAvailable}}) {
        SCOPED_TRACE(row.list);
        join({.documentList = row.list});
        UIStateManager::shared().docAuthState = row.state;
        const auto screen = pushed<AuthMenuVC>(closableTheme());
        for (const auto* name : {"optionsContainerStackView", "titleInfoLabel", "processDescriptionTextView",
                                 "scanPassportLabel", "scanResidentCardLabel", "closeButton"}) {
            EXPECT_EQ(outlet(*screen, name)->isHidden(), row.isHidden) << name;
        }
        EXPECT_TRUE(outlet(*screen, "otherCardContainerView")->isHidden());
        EXPECT_EQ(outlet(*screen, "stepDoneView")->isHidden(), row.state != docAuthSuccess);
        EXPECT_EQ(outlet(*screen, "stepIllustration")->isHidden(), row.state == docAuthSuccess);
        EXPECT_EQ(ThemeCustomization::documentListConfigurationStatus(), row.status);
    }
}

TEST_F(DocumentScreen, PassesOnWhatTheIDScanScreenSays) {
    const auto theme = makeTheme();
    const auto chooseTwice = [&] {
        const auto screen = pushed<AuthMenuVC>(theme);
        outlet(*screen, "otherCardContainerView")->setHidden(false);
        for (int tap = 0; tap < 2; ++tap) {
            EXPECT_TRUE(screen->view()->viewWithTag(3)->touch());
        }
        advance(100ms);
    };
    chooseTwice();
    const Texts failures(2, "ID scan UNKNOWN_ERROR after 100 ms");
    EXPECT_EQ(ears->heard, failures) << "where the host's bundle has no layout";

    addLayout();
    chooseTwice();
    const auto scan = std::dynamic_pointer_cast<OCRScanInitializeVC>(window->visibleViewController());
    ASSERT_NE(scan, nullptr);
    EXPECT_EQ(scan->presentingViewController(), navigation) << "one scan for two taps";
    EXPECT_EQ(scan->themeObj, theme);
    const auto delegate = scan->delegate.lock();
    ASSERT_NE(delegate, nullptr);
    ears->restart();
    delegate->ocrScanDidComplete(std::make_shared<IdvResult>("", IdvEvents::OCR_SCAN));
    EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthSuccess);
    delegate->ocrScanDidComplete(std::unexpected{ResponseCode::OCR_SCAN_FAILED});
    EXPECT_EQ(UIStateManager::shared().docAuthState, DocAuthStatus::docAuthFailedOrInitialized);
    EXPECT_THAT(ears->heard, ElementsAre("ID scan OCR_SCAN", "ID scan OCR_SCAN_FAILED"));
}

} // namespace
} // namespace kivo
