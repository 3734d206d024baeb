#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// A colour in sRGB; each channel from 0 to 1. A value type: equal objects are interchangeable.
__attribute__((visibility("default")))
@interface KivoColor : NSObject<NSCopying, NSSecureCoding> {
@private
    double _red;
    double _green;
    double _blue;
    double _alpha;
}

- (instancetype)init __attribute__((unavailable("use a method that takes values")));
+ (instancetype)new __attribute__((unavailable("use a method that takes values")));

+ (instancetype)colorWithRed:(double)red green:(double)green blue:(double)blue alpha:(double)alpha;

/// The colour of that name in the host's asset catalogue; nil when the catalogue has no such name.
+ (nullable instancetype)colorNamed:(NSString*)name;

/// Nil when a channel is missing from the archive.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

@property (nonatomic, readonly) double red;
@property (nonatomic, readonly) double green;
@property (nonatomic, readonly) double blue;
@property (nonatomic, readonly) double alpha;

@end

NS_ASSUME_NONNULL_END
