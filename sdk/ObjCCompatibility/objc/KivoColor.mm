#import "Properties.h"

@implementation KivoColor

@synthesize red = _red;
@synthesize green = _green;
@synthesize blue = _blue;
@synthesize alpha = _alpha;

+ (instancetype)colorWithRed:(double)red green:(double)green blue:(double)blue alpha:(double)alpha {
    KivoColor* const color = [[[self alloc] init] autorelease];
    color->_red = red;
    color->_green = green;
    color->_blue = blue;
    color->_alpha = alpha;
    return color;
}

+ (nullable instancetype)colorNamed:(NSString*)name {
    const auto color = kivo::platform::Color::named(kivo::objc::fromText(name));
    return color ? [self colorWithNative:*color] : nil;
}

- (id)copyWithZone:(NSZone*)zone {
    return [self retain];
}

- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:[KivoColor class]] && [self nativeColor] == [other nativeColor];
}

- (NSUInteger)hash {
    return [[self description] hash];
}

- (NSString*)description {
    return [NSString stringWithFormat:@"red %g, green %g, blue %g, alpha %g", _red, _green, _blue, _alpha];
}

@end

@implementation KivoColor (Native)

+ (KivoColor*)colorWithNative:(const kivo::platform::Color&)color {
    return [self colorWithRed:color.red green:color.green blue:color.blue alpha:color.alpha];
}

- (kivo::platform::Color)nativeColor {
    return {.red = _red, .green = _green, .blue = _blue, .alpha = _alpha};
}

@end
