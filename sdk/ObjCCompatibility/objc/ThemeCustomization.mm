#import "Native.h"

#import <kivo/objc/KivoNative.h>

@implementation ThemeCustomization

- (instancetype)init {
    return [super initWithNative:std::make_shared<kivo::ThemeCustomization>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

@end

@implementation ThemeCustomization (Native)

+ (nullable ThemeCustomization*)themeWithNative:(const std::shared_ptr<kivo::ThemeCustomization>&)theme {
    return kivo::objc::wrapped<ThemeCustomization>(theme);
}

- (std::shared_ptr<kivo::ThemeCustomization>)nativeTheme {
    return kivo::objc::heldNative<kivo::ThemeCustomization>(self);
}

@end
