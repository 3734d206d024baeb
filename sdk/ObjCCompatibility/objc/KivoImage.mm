#import "Properties.h"

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
