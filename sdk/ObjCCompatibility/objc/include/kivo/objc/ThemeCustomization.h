#pragma once

#import <kivo/objc/CodeTextFieldStyle.h>
#import <kivo/objc/DocumentListConfigurationStatus.h>
#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoContentSizeCategory.h>
#import <kivo/objc/VendorLooks.h>
#import <kivo/objc/ZorCloseButtonAppearance.h>

NS_ASSUME_NONNULL_BEGIN

/// The looks and texts of the SDK's screens; all screens share the theme object. Main thread only.
///
/// Make a theme, change its properties, and set the theme on the session before the first screen is shown. A screen
/// reads the theme when the screen appears, so a later change takes effect the next time. Lengths are in points.
///
/// - An empty text leaves the storyboard's own text in place. Texts are empty at first.
/// - A colour whose comment names an asset comes from the host's asset catalogue when the theme is made, and is the
///   other colour where the catalogue has no such name.
/// - A font that is not installed is nil; the screens then use the system font of the same size.
/// - A colour set to nil becomes clear.
__attribute__((visibility("default")))
@interface ThemeCustomization : KivoObject

/// A theme with the default looks.
- (instancetype)init;
+ (instancetype)new;

// Every screen.

/// Whether texts follow the reading size that the person has set on the device, within the two limits. YES at first.
@property (nonatomic) BOOL enableDynamicTextSizes;
/// Medium at first.
@property (nonatomic) KivoContentSizeCategory minimumContentSizeCategoryLimit;
/// Accessibility medium at first.
@property (nonatomic) KivoContentSizeCategory maximumContentSizeCategoryLimit;

/// Where the document reading screens find their resources and texts; the main bundle at first.
@property (nonatomic, retain, nullable) KivoBundle* appBundle;
/// Not nil at first; nil leaves the close buttons of the storyboard unchanged.
@property (nonatomic, retain, nullable) ZorCloseButtonAppearance* zorCloseButtonAppearance;
/// Whether the document screen shows the activity overlay while the service is notified of a reading. YES at first.
@property (nonatomic) BOOL enableActivityIndicator;

/// "Karbon-Medium" at 32 points.
@property (nonatomic, copy, nullable) KivoFont* screenTitleFont;
/// "Kivo.HeaderTextColor", else system blue.
@property (nonatomic, copy) KivoColor* screenTitleColor;
/// "Karbon-Regular" at 17 points.
@property (nonatomic, copy, nullable) KivoFont* descriptionInfoFont;
/// "Kivo.black", else black.
@property (nonatomic, copy) KivoColor* screenDescriptionInfoTextColor;

/// "Karbon-Bold" at 17 points.
@property (nonatomic, copy, nullable) KivoFont* primaryButtonFont;
/// 25 at first.
@property (nonatomic) double primaryButtonCornerRadius;
/// Clear at first.
@property (nonatomic, copy) KivoColor* primaryButtonBorderColor;
/// 0 at first.
@property (nonatomic) double primaryButtonBorderWidth;

// Activation code screen.

/// Boxed at first.
@property (nonatomic) CodeTextFieldStyle codeTextFieldStyle;
@property (nonatomic, copy) NSString* codeScreenGetStartedTitle;
/// Shown in the empty field of the single style.
@property (nonatomic, copy) NSString* codeScreenTextfieldPlaceholder;
/// Shown between the code field and the scan button.
@property (nonatomic, copy) NSString* codeScreenOrText;
@property (nonatomic, copy) NSString* codeScreenScanQRCodeButtonTitle;
/// White at first.
@property (nonatomic, copy) KivoColor* codeScreenScanQRButtonTitleColor;
/// "Kivo.Button.BackgroundColor", else system blue.
@property (nonatomic, copy) KivoColor* codeScreenScanQRButtonBackgroundColor;
/// "Karbon-Regular" at 17 points; for the single field and the boxes.
@property (nonatomic, copy, nullable) KivoFont* codeTextFieldFont;
/// 4 at first.
@property (nonatomic) double boxedActivationCodeTextFieldCornerRadius;
/// 2 at first.
@property (nonatomic) double boxedActivationCodeTextFieldBorderWidth;

// QR scanning screen.

@property (nonatomic, copy) NSString* codeScreenEnterCodeManuallyButtonTitle;
/// White at first.
@property (nonatomic, copy) KivoColor* qrScanScreenEnterManuallyButtonTitleColor;
/// "Kivo.Button.BackgroundColor", else system blue.
@property (nonatomic, copy) KivoColor* qrScanScreenEnterManuallyButtonBackgroundColor;

// Document screen.

@property (nonatomic, copy) NSString* selectIDTitleText;
@property (nonatomic, copy) NSString* selectIDDescriptionText;
@property (nonatomic, copy) NSString* selectIDPassportOptionText;
@property (nonatomic, copy) NSString* selectIDResidentCardOptionText;
@property (nonatomic, copy) NSString* selectIDOtherCardOptionText;
/// No screen has this button; kept for hosts that set it.
@property (nonatomic, copy) NSString* selectIDNextButtonTitle;
/// "Kivo.Button.BackgroundColor", else system blue. No screen has this button; kept for hosts that set it.
@property (nonatomic, copy) KivoColor* selectIDNextButtonBackgroundColor;
/// "Karbon-Regular" at 17 points.
@property (nonatomic, copy, nullable) KivoFont* documentOptionsTitleFont;
/// The number of failed readings of the chip after which a person may continue without the chip. 2 at first.
@property (nonatomic) NSInteger allowNFCSkipReadingAfterAttempts;

// Face scan screen.

@property (nonatomic, copy) NSString* faceScanIntroTitle;
@property (nonatomic, copy) NSString* faceScanIntroDescription;
@property (nonatomic, copy) NSString* faceScanIntroNextButtonTitle;
/// White at first.
@property (nonatomic, copy) KivoColor* faceScanIntroNextButtonTitleColor;
/// "Kivo.Button.BackgroundColor", else system blue.
@property (nonatomic, copy) KivoColor* faceScanIntroNextButtonBackgroundColor;
/// Shown by the vendor's screen when an upload takes longer than six seconds.
@property (nonatomic, copy) NSString* faceScanUploadMessage;
/// Shown by the vendor's screen after a successful scan.
@property (nonatomic, copy) NSString* faceScanSuccessMessageText;
/// The look of the vendor's face and ID scan screens. The vendor's defaults at first; nil without a vendor.
@property (nonatomic, retain, nullable) KivoFaceTecCustomization* faceVerificationUICustomization;

// One value for the whole SDK.

/// The looks and texts of the vendor's document reading screens, shared by all sessions.
@property (class, nonatomic, readonly) KivoReadIDUIResources* passportScanViewCustomization;

/// Whether the last document screen found a document list.
@property (class, nonatomic, readonly) DocumentListConfigurationStatus documentListConfigurationStatus;

@end

NS_ASSUME_NONNULL_END
