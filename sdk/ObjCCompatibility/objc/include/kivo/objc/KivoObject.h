#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// An object of the library as Objective-C sees it; the state is the library's.
///
/// While anyone holds it, one object of the library is one Objective-C object, so `==` tells whether two are the same.
/// Texts are never nil when read, and nil reads as the empty text when written.
__attribute__((visibility("default")))
@interface KivoObject : NSObject {
@private
    struct KivoNative* _native;
}

/// Raises `NSInvalidArgumentException`, unless the subclass says otherwise.
- (instancetype)init __attribute__((unavailable("use the initializer that takes values")));
+ (instancetype)new __attribute__((unavailable("use the initializer that takes values")));

@end

NS_ASSUME_NONNULL_END
