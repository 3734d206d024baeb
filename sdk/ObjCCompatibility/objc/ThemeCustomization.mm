#import "Properties.h"

#import <kivo/objc/KivoNative.h>

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

KIVO_NUMBER(BOOL, enableDynamicTextSizes, setEnableDynamicTextSizes)
KIVO_NUMBER(KivoContentSizeCategory, minimumContentSizeCategoryLimit, setMinimumContentSizeCategoryLimit)
KIVO_NUMBER(KivoContentSizeCategory, maximumContentSizeCategoryLimit, setMaximumContentSizeCategoryLimit)
KIVO_OBJECT(KivoBundle, appBundle, setAppBundle)
KIVO_OBJECT(ZorCloseButtonAppearance, zorCloseButtonAppearance, setZorCloseButtonAppearance)
KIVO_NUMBER(BOOL, enableActivityIndicator, setEnableActivityIndicator)
KIVO_VALUE(KivoFont, screenTitleFont, setScreenTitleFont)
KIVO_VALUE(KivoColor, screenTitleColor, setScreenTitleColor)
KIVO_VALUE(KivoFont, descriptionInfoFont, setDescriptionInfoFont)
KIVO_VALUE(KivoColor, screenDescriptionInfoTextColor, setScreenDescriptionInfoTextColor)
KIVO_VALUE(KivoFont, primaryButtonFont, setPrimaryButtonFont)
KIVO_NUMBER(double, primaryButtonCornerRadius, setPrimaryButtonCornerRadius)
KIVO_VALUE(KivoColor, primaryButtonBorderColor, setPrimaryButtonBorderColor)
KIVO_NUMBER(double, primaryButtonBorderWidth, setPrimaryButtonBorderWidth)
KIVO_NUMBER(CodeTextFieldStyle, codeTextFieldStyle, setCodeTextFieldStyle)
KIVO_VALUE(NSString, codeScreenGetStartedTitle, setCodeScreenGetStartedTitle)
KIVO_VALUE(NSString, codeScreenTextfieldPlaceholder, setCodeScreenTextfieldPlaceholder)
KIVO_VALUE(NSString, codeScreenOrText, setCodeScreenOrText)
KIVO_VALUE(NSString, codeScreenScanQRCodeButtonTitle, setCodeScreenScanQRCodeButtonTitle)
KIVO_VALUE(KivoColor, codeScreenScanQRButtonTitleColor, setCodeScreenScanQRButtonTitleColor)
KIVO_VALUE(KivoColor, codeScreenScanQRButtonBackgroundColor, setCodeScreenScanQRButtonBackgroundColor)
KIVO_VALUE(KivoFont, codeTextFieldFont, setCodeTextFieldFont)
KIVO_NUMBER(double, boxedActivationCodeTextFieldCornerRadius, setBoxedActivationCodeTextFieldCornerRadius)
KIVO_NUMBER(double, boxedActivationCodeTextFieldBorderWidth, setBoxedActivationCodeTextFieldBorderWidth)
KIVO_VALUE(NSString, codeScreenEnterCodeManuallyButtonTitle, setCodeScreenEnterCodeManuallyButtonTitle)
KIVO_VALUE(KivoColor, qrScanScreenEnterManuallyButtonTitleColor, setQrScanScreenEnterManuallyButtonTitleColor)
KIVO_VALUE(KivoColor, qrScanScreenEnterManuallyButtonBackgroundColor, setQrScanScreenEnterManuallyButtonBackgroundColor)
KIVO_VALUE(NSString, selectIDTitleText, setSelectIDTitleText)
KIVO_VALUE(NSString, selectIDDescriptionText, setSelectIDDescriptionText)
KIVO_VALUE(NSString, selectIDPassportOptionText, setSelectIDPassportOptionText)
KIVO_VALUE(NSString, selectIDResidentCardOptionText, setSelectIDResidentCardOptionText)
KIVO_VALUE(NSString, selectIDOtherCardOptionText, setSelectIDOtherCardOptionText)
KIVO_VALUE(NSString, selectIDNextButtonTitle, setSelectIDNextButtonTitle)
KIVO_VALUE(KivoColor, selectIDNextButtonBackgroundColor, setSelectIDNextButtonBackgroundColor)
KIVO_VALUE(KivoFont, documentOptionsTitleFont, setDocumentOptionsTitleFont)
KIVO_NUMBER(NSInteger, allowNFCSkipReadingAfterAttempts, setAllowNFCSkipReadingAfterAttempts)
KIVO_VALUE(NSString, faceScanIntroTitle, setFaceScanIntroTitle)
KIVO_VALUE(NSString, faceScanIntroDescription, setFaceScanIntroDescription)
KIVO_VALUE(NSString, faceScanIntroNextButtonTitle, setFaceScanIntroNextButtonTitle)
KIVO_VALUE(KivoColor, faceScanIntroNextButtonTitleColor, setFaceScanIntroNextButtonTitleColor)
KIVO_VALUE(KivoColor, faceScanIntroNextButtonBackgroundColor, setFaceScanIntroNextButtonBackgroundColor)
KIVO_VALUE(NSString, faceScanUploadMessage, setFaceScanUploadMessage)
KIVO_VALUE(NSString, faceScanSuccessMessageText, setFaceScanSuccessMessageText)

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
