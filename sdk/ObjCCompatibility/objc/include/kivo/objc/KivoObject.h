#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// An Objective-C object for an object of the library, which keeps the state.
///
/// As long as the Objective-C object is retained, an object of the library has only this one, so `==` compares
/// identity. Texts are never nil when read, and nil reads as the empty text when written.
///
/// Objects are archived only where their class adopts `NSSecureCoding`; archiving any other object raises
/// `NSInvalidArgumentException`.
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
