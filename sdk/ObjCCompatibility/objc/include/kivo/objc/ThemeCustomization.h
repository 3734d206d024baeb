#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// The host's theme, handed by reference to every screen. Main thread only.
__attribute__((visibility("default")))
@interface ThemeCustomization : KivoObject

/// A theme with the default looks.
- (instancetype)init;
+ (instancetype)new;

@end

NS_ASSUME_NONNULL_END
