#import "Properties.h"
#import "Value.h"

#include <kivo/platform/Services.hpp>

@implementation KivoBundle

+ (instancetype)mainBundle {
    return kivo::objc::wrapped<KivoBundle>(kivo::platform::services().bundles->main());
}

+ (nullable instancetype)bundleWithIdentifier:(NSString*)identifier {
    return kivo::objc::wrapped<KivoBundle>(
        kivo::platform::services().bundles->withIdentifier(kivo::objc::fromText(identifier)));
}

- (NSString*)bundleIdentifier {
    const auto identifier = kivo::objc::native<kivo::platform::Bundle>(self)->bundleIdentifier();
    return kivo::objc::toText(identifier.value_or(""));
}

@end

@implementation KivoColor

@synthesize red = _red;
@synthesize green = _green;
@synthesize blue = _blue;
@synthesize alpha = _alpha;
@synthesize hasDarkVariant = _hasDarkVariant;

+ (instancetype)colorWithRed:(double)red green:(double)green blue:(double)blue alpha:(double)alpha {
    return [[[self alloc] initWithNativeColor:{.red = red, .green = green, .blue = blue, .alpha = alpha}] autorelease];
}

+ (instancetype)colorWithLight:(KivoColor*)light dark:(KivoColor*)dark {
    using kivo::platform::Color;
    const auto adaptive =
        Color::adaptive(light ? [light nativeColor] : Color::clear(), dark ? [dark nativeColor] : Color::clear());
    return [[[self alloc] initWithNativeColor:adaptive] autorelease];
}

+ (nullable instancetype)colorNamed:(NSString*)name {
    const auto color = kivo::platform::Color::named(kivo::objc::fromText(name));
    return color ? [[[self alloc] initWithNativeColor:*color] autorelease] : nil;
}

- (id)copyWithZone:(NSZone*)zone {
    return [self retain];
}

- (nullable instancetype)initWithCoder:(NSCoder*)coder {
    kivo::objc::ArchiveReader archive{coder};
    kivo::platform::Color color{.red = archive.number(@"red"),
                                .green = archive.number(@"green"),
                                .blue = archive.number(@"blue"),
                                .alpha = archive.number(@"alpha")};
    // An archive of release 0.1 knows one variant.
    if ([coder containsValueForKey:@"hasDarkVariant"] && archive.integer(@"hasDarkVariant")) {
        color.dark = {.red = archive.number(@"darkRed"),
                      .green = archive.number(@"darkGreen"),
                      .blue = archive.number(@"darkBlue"),
                      .alpha = archive.number(@"darkAlpha")};
    }
    if (archive.isDamaged()) {
        [self release];
        return nil;
    }
    return [self initWithNativeColor:color];
}

KIVO_NO_INIT
KIVO_VALUE(@"red", @"green", @"blue", @"alpha", @"hasDarkVariant", @"darkRed", @"darkGreen", @"darkBlue", @"darkAlpha")

- (KivoColor*)colorInStyle:(KivoUserInterfaceStyle)style {
    const auto shown =
        [self nativeColor].in(style == KivoUserInterfaceStyleDark ? kivo::platform::UserInterfaceStyle::dark
                                                                  : kivo::platform::UserInterfaceStyle::light);
    return [[[KivoColor alloc] initWithNativeColor:shown] autorelease];
}

- (NSString*)description {
    NSString* const light =
        [NSString stringWithFormat:@"red %g, green %g, blue %g, alpha %g", _red, _green, _blue, _alpha];
    return _hasDarkVariant ? [light stringByAppendingFormat:@"; in the dark red %g, green %g, blue %g, alpha %g",
                                                            _darkRed, _darkGreen, _darkBlue, _darkAlpha]
                           : light;
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
        _hasDarkVariant = color.dark.has_value();
        const auto dark = color.dark.value_or(kivo::platform::Color::Variant{.alpha = 0});
        _darkRed = dark.red;
        _darkGreen = dark.green;
        _darkBlue = dark.blue;
        _darkAlpha = dark.alpha;
    }
    return self;
}

- (kivo::platform::Color)nativeColor {
    kivo::platform::Color color{.red = _red, .green = _green, .blue = _blue, .alpha = _alpha};
    if (_hasDarkVariant) {
        color.dark = {.red = _darkRed, .green = _darkGreen, .blue = _darkBlue, .alpha = _darkAlpha};
    }
    return color;
}

@end

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

- (nullable instancetype)initWithCoder:(NSCoder*)coder {
    kivo::objc::ArchiveReader archive{coder};
    const auto name = kivo::objc::fromText(archive.text(@"fontName"));
    const double size = archive.number(@"pointSize");
    const auto font = name.empty() ? kivo::platform::Font::system(size) : kivo::platform::Font::named(name, size);
    if (archive.isDamaged() || !font) {
        [self release];
        return nil;
    }
    return [self initWithNativeFont:*font];
}

KIVO_NO_INIT
KIVO_VALUE(@"fontName", @"pointSize")

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

@implementation KivoImage

+ (nullable instancetype)imageNamed:(NSString*)name {
    const auto image = kivo::platform::Image::named(kivo::objc::fromText(name));
    return kivo::objc::wrapped<KivoImage>(std::const_pointer_cast<kivo::platform::Image>(image));
}

+ (instancetype)imageWithContentsOfFile:(NSString*)path {
    const auto file = kivo::objc::fromText(path);
    return kivo::objc::wrapped<KivoImage>(
        std::make_shared<kivo::platform::Image>(kivo::platform::Image{.name = file, .file = file}));
}

- (NSString*)path {
    return kivo::objc::toText(kivo::objc::native<kivo::platform::Image>(self)->file.string());
}

@end
