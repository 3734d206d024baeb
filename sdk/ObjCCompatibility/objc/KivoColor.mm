#import "Properties.h"

#include <cstddef>
#include <functional>

@implementation KivoColor

@synthesize red = _red;
@synthesize green = _green;
@synthesize blue = _blue;
@synthesize alpha = _alpha;

+ (instancetype)colorWithRed:(double)red green:(double)green blue:(double)blue alpha:(double)alpha {
    return [[[self alloc] initWithNativeColor:{.red = red, .green = green, .blue = blue, .alpha = alpha}] autorelease];
}

+ (nullable instancetype)colorNamed:(NSString*)name {
    const auto color = kivo::platform::Color::named(kivo::objc::fromText(name));
    return color ? [[[self alloc] initWithNativeColor:*color] autorelease] : nil;
}

- (id)copyWithZone:(NSZone*)zone {
    return [self retain];
}

- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:[KivoColor class]] && [self nativeColor] == [other nativeColor];
}

- (NSUInteger)hash {
    std::size_t hash = 0;
    for (const double channel : {_red, _green, _blue, _alpha}) {
        hash = hash * 31 + std::hash<double>{}(channel);
    }
    return hash;
}

- (NSString*)description {
    return [NSString stringWithFormat:@"red %g, green %g, blue %g, alpha %g", _red, _green, _blue, _alpha];
}

@end

@implementation KivoColor (Native)

- (instancetype)initWithNativeColor:(const kivo::platform::Color&)color {
    self = [super init];
    if (self) {
        _red = color.red;
        _green = color.green;
        _blue = color.blue;
        _alpha = color.alpha;
    }
    return self;
}

- (kivo::platform::Color)nativeColor {
    return {.red = _red, .green = _green, .blue = _blue, .alpha = _alpha};
}

@end
