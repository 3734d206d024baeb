#import "Properties.h"

@implementation KivoFont

@synthesize fontName = _fontName;
@synthesize pointSize = _pointSize;

+ (nullable instancetype)fontWithName:(NSString*)fontName size:(double)pointSize {
    const auto font = kivo::platform::Font::named(kivo::objc::fromText(fontName), pointSize);
    return font ? [self fontWithNative:*font] : nil;
}

+ (instancetype)systemFontOfSize:(double)pointSize {
    return [self fontWithNative:kivo::platform::Font::system(pointSize)];
}

- (void)dealloc {
    [_fontName release];
    [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
    return [self retain];
}

- (BOOL)isEqual:(id)other {
    return [other isKindOfClass:[KivoFont class]] && [self nativeFont] == [other nativeFont];
}

- (NSUInteger)hash {
    return [_fontName hash];
}

- (NSString*)description {
    return [NSString stringWithFormat:@"%@ at %g points", [_fontName length] ? _fontName : @"system font", _pointSize];
}

@end

@implementation KivoFont (Native)

+ (KivoFont*)fontWithNative:(const kivo::platform::Font&)native {
    KivoFont* const font = [[[self alloc] init] autorelease];
    font->_fontName = [kivo::objc::toText(native.name) copy];
    font->_pointSize = native.pointSize;
    return font;
}

- (kivo::platform::Font)nativeFont {
    return {.name = kivo::objc::fromText(_fontName), .pointSize = _pointSize};
}

@end
