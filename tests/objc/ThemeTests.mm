#import <kivo/objc/KivoNative.h>
#import <kivo/objc/KivoObjC.h>

#include <gtest/gtest.h>

namespace {

namespace platform = kivo::platform;

class ObjCTheme : public testing::Test {
protected:
    ~ObjCTheme() override { [pool drain]; }

    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    ThemeCustomization* theme = [[ThemeCustomization new] autorelease];
    std::shared_ptr<kivo::ThemeCustomization> native = [theme nativeTheme];
};

TEST_F(ObjCTheme, IsTheOneThatTheScreensRead) {
    EXPECT_EQ(theme.codeTextFieldStyle, CodeTextFieldStyleBoxed);
    EXPECT_EQ(theme.maximumContentSizeCategoryLimit, KivoContentSizeCategoryAccessibilityMedium);
    EXPECT_TRUE(theme.enableDynamicTextSizes && theme.enableActivityIndicator);
    theme.codeScreenGetStartedTitle = @"d\u00e9but";
    theme.codeTextFieldStyle = CodeTextFieldStyleSingle;
    theme.enableDynamicTextSizes = NO;
    theme.screenTitleColor = [KivoColor colorWithRed:0.1 green:0.2 blue:0.3 alpha:0.4];
    theme.screenTitleFont = [KivoFont systemFontOfSize:21];
    theme.allowNFCSkipReadingAfterAttempts = 5;
    EXPECT_EQ(native->codeScreenGetStartedTitle, "d\u00e9but");
    EXPECT_EQ(native->codeTextFieldStyle, kivo::CodeTextFieldStyle::single);
    EXPECT_FALSE(native->enableDynamicTextSizes);
    EXPECT_EQ(native->screenTitleColor, (platform::Color{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(native->screenTitleFont, platform::Font::system(21));
    EXPECT_EQ(native->allowNFCSkipReadingAfterAttempts, 5);
    EXPECT_EQ(ThemeCustomization.documentListConfigurationStatus, DocumentListConfigurationStatusNotConfigured);
}

TEST_F(ObjCTheme, ReachesTheLooksOfTheVendorsScreens) {
    EXPECT_EQ(theme.faceVerificationUICustomization, nil) << "no vendor is installed";
    const auto vendors = std::make_shared<platform::FaceTecCustomization>();
    KivoFaceTecCustomization* const look = [KivoFaceTecCustomization customizationWithNative:vendors];
    look.retryScreenSlideshowImages = @[ [KivoImage imageWithContentsOfFile:@"/pictures/ideal.png"] ];
    theme.faceVerificationUICustomization = look;
    EXPECT_EQ(native->faceVerificationUICustomization.get(), vendors.get());
    EXPECT_EQ(vendors->guidanceCustomization.retryScreenSlideshowImages.at(0)->file, "/pictures/ideal.png");
    EXPECT_EQ([look.retryScreenSlideshowImages count], 1U);

    ReadIDUIResourcesWrapper* const wrapper = [[ReadIDUIResourcesWrapper new] autorelease];
    KivoReadIDUIResources* const resources = ThemeCustomization.passportScanViewCustomization;
    resources.customStringTableName = nil;
    EXPECT_TRUE([wrapper.customStringTableName isEqual:@""]);
    wrapper.customStringTableName = @"Reading";
    wrapper.titleFont = [KivoFont systemFontOfSize:23];
    EXPECT_TRUE([resources.customStringTableName isEqual:@"Reading"]);
    EXPECT_TRUE([resources.titleFont isEqual:wrapper.titleFont]);
}

TEST_F(ObjCTheme, TakesNilForNothing) {
    theme.codeScreenOrText = @"or";
    theme.codeScreenOrText = static_cast<NSString* _Nonnull>(nil);
    theme.screenTitleColor = static_cast<KivoColor* _Nonnull>(nil);
    theme.screenTitleFont = nil;
    theme.zorCloseButtonAppearance = nil;
    EXPECT_EQ(native->codeScreenOrText, "");
    EXPECT_EQ(native->screenTitleColor, platform::Color::clear());
    EXPECT_FALSE(native->screenTitleFont);
    EXPECT_EQ(native->zorCloseButtonAppearance, nullptr);
    EXPECT_EQ(theme.screenTitleFont, nil);
}

TEST_F(ObjCTheme, HoldsTheCloseButtonsLook) {
    ZorCloseButtonAppearance* const look = theme.zorCloseButtonAppearance;
    EXPECT_EQ(look, theme.zorCloseButtonAppearance) << "one object";
    EXPECT_TRUE(look.closeButtonIsHidden && look.closeButtonCornerRadius == nil);
    look.closeButtonIsHidden = NO;
    look.closeButtonTitle = @"Leave";
    look.closeButtonCornerRadius = @3.5;
    look.closeButtonTitleColor = [KivoColor colorWithRed:1 green:0 blue:0 alpha:1];
    look.closeButtonFont = [KivoFont systemFontOfSize:11];
    look.closeButtonWidth = 80;
    look.closeButtonHeight = 40;
    look.closeButtonImage = [KivoImage imageWithContentsOfFile:@"/pictures/cross.png"];
    const auto& native = *this->native->zorCloseButtonAppearance;
    EXPECT_FALSE(native.closeButtonIsHidden);
    EXPECT_EQ(native.closeButtonTitle, "Leave");
    EXPECT_EQ(native.closeButtonCornerRadius, 3.5);
    EXPECT_EQ(native.closeButtonTitleColor, (platform::Color{1, 0, 0, 1}));
    EXPECT_FALSE(native.closeButtonBackgroundColor);
    EXPECT_EQ(native.closeButtonFont.pointSize, 11);
    EXPECT_EQ(native.closeButtonWidth, 80);
    EXPECT_EQ(native.closeButtonHeight, 40);
    EXPECT_EQ(native.closeButtonImage->file, "/pictures/cross.png");
    EXPECT_EQ(native.closeButtonBackGroundImage, nullptr);
    look.closeButtonCornerRadius = nil;
    EXPECT_FALSE(native.closeButtonCornerRadius);
    ZorCloseButtonAppearance* const other = [[ZorCloseButtonAppearance new] autorelease];
    theme.zorCloseButtonAppearance = other;
    EXPECT_EQ(theme.zorCloseButtonAppearance, other);
}

TEST_F(ObjCTheme, FindsWhatIsThereByName) {
    EXPECT_EQ([KivoFont fontWithName:@"No such font" size:12], nil);
    EXPECT_EQ([KivoColor colorNamed:@"No.such.colour"], nil);
    EXPECT_EQ([KivoImage imageNamed:@"no-such-image"], nil);
    EXPECT_EQ([KivoBundle bundleWithIdentifier:@"no.such.bundle"], nil);
    EXPECT_EQ(theme.appBundle, [KivoBundle mainBundle]);
    theme.appBundle = [KivoBundle bundleWithIdentifier:@"com.test.ZORFramework"];
    EXPECT_STREQ([theme.appBundle.bundleIdentifier UTF8String], "com.test.ZORFramework");
    EXPECT_EQ(native->appBundle->bundleIdentifier(), "com.test.ZORFramework");
}

} // namespace
