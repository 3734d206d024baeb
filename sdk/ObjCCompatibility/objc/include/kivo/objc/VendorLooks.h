#pragma once

#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoImage.h>

NS_ASSUME_NONNULL_BEGIN

/// The look of the face-scan vendor's screens. Main thread only.
///
/// What the vendor's library offers beyond this is set in C++: see `KivoNative.h`.
__attribute__((visibility("default")))
@interface KivoFaceTecCustomization : KivoObject

/// A new look with the vendor's defaults; nil where no vendor is installed.
+ (nullable instancetype)customizationWithVendorDefaults;

/// Pictures for the screen that asks to try again; none for the vendor's own. The SDK puts the host's image
/// "FaceTec_ideal_5" here, where the host has one.
@property (nonatomic, copy) NSArray<KivoImage*>* retryScreenSlideshowImages;

@end

/// Fonts, sizes and texts of the document-reading vendor's screens: one object for all sessions of the process. Main
/// thread only; sizes are in points. Get it from `ThemeCustomization`.
__attribute__((visibility("default")))
@interface KivoReadIDUIResources : KivoObject

/// Where images and the string table are; the document screen sets it to its theme's `appBundle`. Nil for the vendor's.
@property (nonatomic, retain, nullable) KivoBundle* customBundle;
/// The table of `customBundle` with the texts; nil for the vendor's own.
@property (nonatomic, copy, nullable) NSString* customStringTableName;
@property (nonatomic) double textSize;
/// Nil for the vendor's own, like the other fonts. The document screen sets it to its theme's `primaryButtonFont`.
@property (nonatomic, copy, nullable) KivoFont* buttonFont;
@property (nonatomic, copy, nullable) KivoFont* titleFont;
@property (nonatomic, copy, nullable) KivoFont* textFont;
@property (nonatomic) double buttonTextSize;
@property (nonatomic) double buttonHeight;
/// The document screen sets it to its theme's `primaryButtonCornerRadius`.
@property (nonatomic) double buttonCornerRadius;
/// Whether the vendor's screens follow the reading size that the person has set on the device.
@property (nonatomic) BOOL isDynamicTypeEnabled;

@end

/// The same object's values, never nil. It holds nothing itself: every instance reads and writes the one object of the
/// process. Main thread only; set before a document is acquired.
__attribute__((visibility("default")))
@interface ReadIDUIResourcesWrapper : NSObject

@property (nonatomic) double textSize;
/// A font of the system where none was set; likewise for the other fonts.
@property (nonatomic, copy) KivoFont* buttonFont;
@property (nonatomic, copy) KivoFont* titleFont;
@property (nonatomic, copy) KivoFont* textFont;
@property (nonatomic) double buttonTextSize;
@property (nonatomic) double buttonHeight;
@property (nonatomic) BOOL isDynamicTypeEnabled;
/// Empty for the vendor's own texts.
@property (nonatomic, copy) NSString* customStringTableName;

@end

NS_ASSUME_NONNULL_END
