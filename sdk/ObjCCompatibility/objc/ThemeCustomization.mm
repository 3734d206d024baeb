#import "Properties.h"

#include <kivo/ZorCloseButtonAppearance.hpp>
#import <kivo/objc/KivoNative.h>
#import <kivo/objc/ZorCloseButtonAppearance.h>

namespace {

kivo::ThemeCustomization& native(ThemeCustomization* theme) {
    return *kivo::objc::native<kivo::ThemeCustomization>(theme);
}

} // namespace

@implementation ThemeCustomization

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::ThemeCustomization>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

KIVO_PROPERTY(BOOL, enableDynamicTextSizes, setEnableDynamicTextSizes)
KIVO_PROPERTY(KivoContentSizeCategory, minimumContentSizeCategoryLimit, setMinimumContentSizeCategoryLimit)
KIVO_PROPERTY(KivoContentSizeCategory, maximumContentSizeCategoryLimit, setMaximumContentSizeCategoryLimit)
KIVO_PROPERTY(KivoBundle*, appBundle, setAppBundle)
KIVO_PROPERTY(ZorCloseButtonAppearance*, zorCloseButtonAppearance, setZorCloseButtonAppearance)
KIVO_PROPERTY(BOOL, enableActivityIndicator, setEnableActivityIndicator)
KIVO_PROPERTY(KivoFont*, screenTitleFont, setScreenTitleFont)
KIVO_PROPERTY(KivoColor*, screenTitleColor, setScreenTitleColor)
KIVO_PROPERTY(KivoFont*, descriptionInfoFont, setDescriptionInfoFont)
KIVO_PROPERTY(KivoColor*, screenDescriptionInfoTextColor, setScreenDescriptionInfoTextColor)
KIVO_PROPERTY(KivoFont*, primaryButtonFont, setPrimaryButtonFont)
KIVO_PROPERTY(double, primaryButtonCornerRadius, setPrimaryButtonCornerRadius)
KIVO_PROPERTY(KivoColor*, primaryButtonBorderColor, setPrimaryButtonBorderColor)
KIVO_PROPERTY(double, primaryButtonBorderWidth, setPrimaryButtonBorderWidth)
KIVO_PROPERTY(CodeTextFieldStyle, codeTextFieldStyle, setCodeTextFieldStyle)
KIVO_PROPERTY(NSString*, codeScreenGetStartedTitle, setCodeScreenGetStartedTitle)
KIVO_PROPERTY(NSString*, codeScreenTextfieldPlaceholder, setCodeScreenTextfieldPlaceholder)
KIVO_PROPERTY(NSString*, codeScreenOrText, setCodeScreenOrText)
KIVO_PROPERTY(NSString*, codeScreenScanQRCodeButtonTitle, setCodeScreenScanQRCodeButtonTitle)
KIVO_PROPERTY(KivoColor*, codeScreenScanQRButtonTitleColor, setCodeScreenScanQRButtonTitleColor)
KIVO_PROPERTY(KivoColor*, codeScreenScanQRButtonBackgroundColor, setCodeScreenScanQRButtonBackgroundColor)
KIVO_PROPERTY(KivoFont*, codeTextFieldFont, setCodeTextFieldFont)
KIVO_PROPERTY(double, boxedActivationCodeTextFieldCornerRadius, setBoxedActivationCodeTextFieldCornerRadius)
KIVO_PROPERTY(double, boxedActivationCodeTextFieldBorderWidth, setBoxedActivationCodeTextFieldBorderWidth)
KIVO_PROPERTY(NSString*, codeScreenEnterCodeManuallyButtonTitle, setCodeScreenEnterCodeManuallyButtonTitle)
KIVO_PROPERTY(KivoColor*, qrScanScreenEnterManuallyButtonTitleColor, setQrScanScreenEnterManuallyButtonTitleColor)
KIVO_PROPERTY(KivoColor*, qrScanScreenEnterManuallyButtonBackgroundColor,
              setQrScanScreenEnterManuallyButtonBackgroundColor)
KIVO_PROPERTY(NSString*, selectIDTitleText, setSelectIDTitleText)
KIVO_PROPERTY(NSString*, selectIDDescriptionText, setSelectIDDescriptionText)
KIVO_PROPERTY(NSString*, selectIDPassportOptionText, setSelectIDPassportOptionText)
KIVO_PROPERTY(NSString*, selectIDResidentCardOptionText, setSelectIDResidentCardOptionText)
KIVO_PROPERTY(NSString*, selectIDOtherCardOptionText, setSelectIDOtherCardOptionText)
KIVO_PROPERTY(NSString*, selectIDNextButtonTitle, setSelectIDNextButtonTitle)
KIVO_PROPERTY(KivoColor*, selectIDNextButtonBackgroundColor, setSelectIDNextButtonBackgroundColor)
KIVO_PROPERTY(KivoFont*, documentOptionsTitleFont, setDocumentOptionsTitleFont)
KIVO_PROPERTY(NSInteger, allowNFCSkipReadingAfterAttempts, setAllowNFCSkipReadingAfterAttempts)
KIVO_PROPERTY(NSString*, faceScanIntroTitle, setFaceScanIntroTitle)
KIVO_PROPERTY(NSString*, faceScanIntroDescription, setFaceScanIntroDescription)
KIVO_PROPERTY(NSString*, faceScanIntroNextButtonTitle, setFaceScanIntroNextButtonTitle)
KIVO_PROPERTY(KivoColor*, faceScanIntroNextButtonTitleColor, setFaceScanIntroNextButtonTitleColor)
KIVO_PROPERTY(KivoColor*, faceScanIntroNextButtonBackgroundColor, setFaceScanIntroNextButtonBackgroundColor)
KIVO_PROPERTY(NSString*, faceScanUploadMessage, setFaceScanUploadMessage)
KIVO_PROPERTY(NSString*, faceScanSuccessMessageText, setFaceScanSuccessMessageText)
KIVO_PROPERTY(KivoFaceTecCustomization*, faceVerificationUICustomization, setFaceVerificationUICustomization)

+ (KivoReadIDUIResources*)passportScanViewCustomization {
    return kivo::objc::shown<KivoReadIDUIResources*>(kivo::ThemeCustomization::passportScanViewCustomization());
}

+ (DocumentListConfigurationStatus)documentListConfigurationStatus {
    return static_cast<DocumentListConfigurationStatus>(kivo::ThemeCustomization::documentListConfigurationStatus());
}

@end

@implementation ThemeCustomization (Native)

+ (nullable ThemeCustomization*)themeWithNative:(const std::shared_ptr<kivo::ThemeCustomization>&)theme {
    return kivo::objc::wrapped<ThemeCustomization>(theme);
}

- (std::shared_ptr<kivo::ThemeCustomization>)nativeTheme {
    return kivo::objc::heldNative<kivo::ThemeCustomization>(self);
}

@end

namespace {

kivo::ZorCloseButtonAppearance& native(ZorCloseButtonAppearance* appearance) {
    return *kivo::objc::native<kivo::ZorCloseButtonAppearance>(appearance);
}

} // namespace

@implementation ZorCloseButtonAppearance

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::ZorCloseButtonAppearance>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

KIVO_PROPERTY(BOOL, closeButtonIsHidden, setCloseButtonIsHidden)
KIVO_PROPERTY(KivoImage*, closeButtonImage, setCloseButtonImage)
KIVO_PROPERTY(KivoImage*, closeButtonBackGroundImage, setCloseButtonBackGroundImage)
KIVO_PROPERTY(NSString*, closeButtonTitle, setCloseButtonTitle)
KIVO_PROPERTY(KivoColor*, closeButtonBackgroundColor, setCloseButtonBackgroundColor)
KIVO_PROPERTY(KivoColor*, closeButtonTitleColor, setCloseButtonTitleColor)
KIVO_PROPERTY(double, closeButtonWidth, setCloseButtonWidth)
KIVO_PROPERTY(double, closeButtonHeight, setCloseButtonHeight)
KIVO_PROPERTY(NSNumber*, closeButtonCornerRadius, setCloseButtonCornerRadius)
KIVO_PROPERTY(KivoFont*, closeButtonFont, setCloseButtonFont)

- (void)applyAppearanceCloseButtonWithCloseButton:(KivoButton*)closeButton
                                  widthConstraint:(KivoLayoutConstraint*)widthConstraint
                                 heightConstraint:(KivoLayoutConstraint*)heightConstraint {
    if (closeButton && widthConstraint && heightConstraint) {
        native(self).applyAppearanceCloseButton(static_cast<kivo::platform::Button&>(*[closeButton nativeView]),
                                                *[widthConstraint nativeConstraint],
                                                *[heightConstraint nativeConstraint]);
    }
}

@end
