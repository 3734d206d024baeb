#pragma once

#import <kivo/objc/KivoUserInterfaceStyle.h>

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// A colour in sRGB; each channel from 0 to 1, with perhaps another colour for the dark appearance. A value type: equal
/// objects are interchangeable.
__attribute__((visibility("default")))
@interface KivoColor : NSObject<NSCopying, NSSecureCoding> {
@private
    double _red;
    double _green;
    double _blue;
    double _alpha;
    BOOL _hasDarkVariant;
    double _darkRed;
    double _darkGreen;
    double _darkBlue;
    double _darkAlpha;
}

- (instancetype)init __attribute__((unavailable("use a method that takes values")));
+ (instancetype)new __attribute__((unavailable("use a method that takes values")));

+ (instancetype)colorWithRed:(double)red green:(double)green blue:(double)blue alpha:(double)alpha;

/// `light`, with the channels of `dark` for the dark appearance. Of an argument with two variants the light one is
/// taken.
+ (instancetype)colorWithLight:(KivoColor*)light dark:(KivoColor*)dark;

/// The colour of that name in the host's asset catalogue, with its dark variant if the colour has one; nil when the
/// catalogue has no such name.
+ (nullable instancetype)colorNamed:(NSString*)name;

/// Nil when a channel is missing from the archive.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

/// The channels in the light appearance.
@property (nonatomic, readonly) double red;
@property (nonatomic, readonly) double green;
@property (nonatomic, readonly) double blue;
@property (nonatomic, readonly) double alpha;

/// Whether the dark appearance has a colour of its own.
@property (nonatomic, readonly) BOOL hasDarkVariant;

/// The colour as that appearance shows it, without another variant: `[color colorInStyle:view.userInterfaceStyle]`.
- (KivoColor*)colorInStyle:(KivoUserInterfaceStyle)style;

@end

NS_ASSUME_NONNULL_END
