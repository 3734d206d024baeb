#include "support/VendorScreens.hpp"

#include <kivo/ReadIDUIResourcesWrapper.hpp>

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

TEST(ReadIDResources, AreTheVendorsOneObjectForAllWrappers) {
    platform::Services services;
    services.readID = std::make_shared<test::DocumentVendor>();
    platform::install(services);
    const auto& shared = ThemeCustomization::passportScanViewCustomization();
    ReadIDUIResourcesWrapper wrapper;
    EXPECT_NE(std::dynamic_pointer_cast<test::VendorLooks>(shared), nullptr);
    EXPECT_EQ(wrapper.textSize(), 21);
    EXPECT_EQ(wrapper.titleFont(), platform::Font{});
    wrapper.setCustomStringTableName("Texts");
    wrapper.setTitleFont(platform::Font::system(30));
    wrapper.setTextFont(platform::Font::system(11));
    wrapper.setButtonFont(platform::Font::system(12));
    wrapper.setIsDynamicTypeEnabled(true);
    const ReadIDUIResourcesWrapper another;
    EXPECT_EQ(another.customStringTableName(), "Texts");
    EXPECT_EQ(another.titleFont().pointSize, 30);
    EXPECT_EQ(shared->textFont->pointSize, 11);
    EXPECT_EQ(shared->buttonFont->pointSize, 12);
    EXPECT_TRUE(shared->isDynamicTypeEnabled);
    wrapper.setCustomStringTableName("");
    EXPECT_FALSE(shared->customStringTableName.has_value());
}

} // namespace
} // namespace kivo
