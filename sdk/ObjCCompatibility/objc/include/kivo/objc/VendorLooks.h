#pragma once

#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoImage.h>

NS_ASSUME_NONNULL_BEGIN

/// The look of the face-scan vendor's screens. Main thread only.
///
/// Further settings of the vendor's library are set in C++: see `KivoNative.h`.
__attribute__((visibility("default")))
@interface KivoFaceTecCustomization : KivoObject

/// A new look with the vendor's defaults; nil where no vendor is installed.
+ (nullable instancetype)customizationWithVendorDefaults;

/// Pictures for the screen that asks to try again; empty for the vendor's own pictures. The SDK sets the host's image
/// "FaceTec_ideal_5", if the host has such an image.
@property (nonatomic, copy) NSArray<KivoImage*>* retryScreenSlideshowImages;

@end

/// Fonts, sizes and texts of the document-reading vendor's screens: one object for all sessions of the process. Main
/// thread only; sizes are in points. Get it from `ThemeCustomization`.
__attribute__((visibility("default")))
@interface KivoReadIDUIResources : KivoObject

/// The bundle of images and texts; the document screen sets its theme's `appBundle`. Nil for the vendor's bundle.
@property (nonatomic, retain, nullable) KivoBundle* customBundle;
/// The table of `customBundle` with the texts; nil for the vendor's table.
@property (nonatomic, copy, nullable) NSString* customStringTableName;
@property (nonatomic) double textSize;
/// Nil, as for the other fonts, means the vendor's font. The document screen sets its theme's `primaryButtonFont`.
@property (nonatomic, copy, nullable) KivoFont* buttonFont;
@property (nonatomic, copy, nullable) KivoFont* titleFont;
@property (nonatomic, copy, nullable) KivoFont* textFont;
@property (nonatomic) double buttonTextSize;
@property (nonatomic) double buttonHeight;
/// The document screen sets its theme's `primaryButtonCornerRadius`.
@property (nonatomic) double buttonCornerRadius;
/// Whether the vendor's screens follow the reading size that the person has set on the device.
@property (nonatomic) BOOL isDynamicTypeEnabled;

@end

/// The values of that object, never nil. The wrapper holds no values: every instance reads and writes the shared object
/// of the process. Main thread only; set before a document is acquired.
__attribute__((visibility("default")))
@interface ReadIDUIResourcesWrapper : NSObject

@property (nonatomic) double textSize;
/// The system's font where no font was set; likewise for the other fonts.
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
