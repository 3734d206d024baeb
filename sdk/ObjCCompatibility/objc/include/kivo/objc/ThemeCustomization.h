#pragma once

#import <kivo/objc/CodeTextFieldStyle.h>
#import <kivo/objc/DocumentListConfigurationStatus.h>
#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoContentSizeCategory.h>
#import <kivo/objc/VendorLooks.h>
#import <kivo/objc/ZorCloseButtonAppearance.h>

NS_ASSUME_NONNULL_BEGIN

/// The host's theme: the look and the wording of the SDK's screens, handed by reference to each of them. Main thread
/// only.
///
/// Make one, change what you want changed, and give it to the session before the first screen is shown. A screen reads
/// it when it appears, so a later change reaches a screen the next time. Lengths are in points.
///
/// - An empty text leaves the storyboard's own text in place. Texts are empty at first.
/// - A colour whose comment names an asset is looked up in the host's asset catalogue when the theme is made; it is the
///   other colour where the catalogue has no such name.
/// - A font is nil where it is not installed; the screens then use the system font of the same size.
/// - Nil, written to a colour, makes it clear.
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
/// Not nil at first; without one, close buttons stay as the storyboard has them.
@property (nonatomic, retain, nullable) ZorCloseButtonAppearance* zorCloseButtonAppearance;
/// Whether the document screen shows the activity overlay while the service is told of a reading. YES at first.
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
/// Between typing and scanning.
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
/// After how many failed readings of the chip a person may go on without it. 2 at first.
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
/// Shown by the vendor's screen after a good scan.
@property (nonatomic, copy) NSString* faceScanSuccessMessageText;
/// The look of the vendor's face and ID scan screens. The vendor's defaults at first; nil without a vendor.
@property (nonatomic, retain, nullable) KivoFaceTecCustomization* faceVerificationUICustomization;

// One value for the whole SDK.

/// The looks and texts of the vendor's document reading screens, shared by all sessions.
@property (class, nonatomic, readonly) KivoReadIDUIResources* passportScanViewCustomization;

/// What the document screen found when it was last shown.
@property (class, nonatomic, readonly) DocumentListConfigurationStatus documentListConfigurationStatus;

@end

NS_ASSUME_NONNULL_END
