#import "Properties.h"

@implementation KivoFont

@synthesize fontName = _fontName;
@synthesize pointSize = _pointSize;

+ (nullable instancetype)fontWithName:(NSString*)fontName size:(double)pointSize {
    const auto font = kivo::platform::Font::named(kivo::objc::fromText(fontName), pointSize);
    return font ? [[[self alloc] initWithNativeFont:*font] autorelease] : nil;
}

+ (instancetype)systemFontOfSize:(double)pointSize {
    return [[[self alloc] initWithNativeFont:kivo::platform::Font::system(pointSize)] autorelease];
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

- (instancetype)initWithNativeFont:(const kivo::platform::Font&)font {
    self = [super init];
    if (self) {
        _fontName = [kivo::objc::toText(font.name) copy];
        _pointSize = font.pointSize;
    }
    return self;
}

- (kivo::platform::Font)nativeFont {
    return {.name = kivo::objc::fromText(_fontName), .pointSize = _pointSize};
}

@end
