#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// A typeface at a size in points. A value type: equal objects are interchangeable.
__attribute__((visibility("default")))
@interface KivoFont : NSObject<NSCopying, NSSecureCoding> {
@private
    NSString* _fontName;
    double _pointSize;
}

- (instancetype)init __attribute__((unavailable("use a method that takes values")));
+ (instancetype)new __attribute__((unavailable("use a method that takes values")));

/// The font of that name, such as "Karbon-Medium"; nil when the font is not installed on this machine.
+ (nullable instancetype)fontWithName:(NSString*)fontName size:(double)pointSize;
+ (instancetype)systemFontOfSize:(double)pointSize;

/// Nil when a value is missing from the archive, and when the font is not installed on this machine.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

/// Empty for the system's font.
@property (nonatomic, readonly) NSString* fontName;
@property (nonatomic, readonly) double pointSize;

@end

NS_ASSUME_NONNULL_END
