#include "Configuration/environment/SdkBundle.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "support/DocumentScreens.hpp"

#include <kivo/ReadIDUIResourcesWrapper.hpp>

#include <filesystem>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using namespace platform::readid;
using enum ResponseCode;
using test::DocumentScreen;
using test::Heard;

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
        if (hasLayout) {
            choose(*screen, 3);
        }
        advance(100ms);
        settle();
        if (!hasLayout) {
            EXPECT_EQ(reports->heard, Heard{"ID scan UNKNOWN_ERROR"});
            pop();
            continue;
        }
        const auto scan = std::dynamic_pointer_cast<OCRScanInitializeVC>(window->visibleViewController());
        ASSERT_NE(scan, nullptr);
        EXPECT_EQ(scan->presentingViewController(), navigation) << "one scan for two taps";
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

TEST(ReadIDResources, AreTheVendorsOneObjectForAllWrappers) {
    platform::Services services;
    services.readID = std::make_shared<test::DocumentVendor>();
    platform::install(services);
    const auto& shared = ThemeCustomization::passportScanViewCustomization();
    ReadIDUIResourcesWrapper wrapper;
    EXPECT_NE(std::dynamic_pointer_cast<test::VendorLooks>(shared), nullptr);
    EXPECT_EQ(wrapper.textSize(), 21);
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
