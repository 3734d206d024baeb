#pragma once

#import <kivo/objc/IdvResult.h>
#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// Whether an `ObjCResult` holds a success or an error.
typedef NS_ENUM(NSInteger, ObjCResultStatus) {
    ObjCResultStatusSuccess = 0,
    ObjCResultStatusFailure = 1,
};

/// The domain of `asNSError`.
FOUNDATION_EXPORT __attribute__((visibility("default"))) NSString* const KivoErrorDomain;
/// The key of `errorName` in the user info of `asNSError`.
FOUNDATION_EXPORT __attribute__((visibility("default"))) NSString* const KivoErrorNameKey;

/// A failure as plain values. Errors with the same values are equal.
__attribute__((visibility("default")))
@interface ObjCError : KivoObject<NSSecureCoding>

- (instancetype)initWithErrorName:(NSString*)errorName
                          message:(NSString*)message
                             code:(NSInteger)code
                   genericMessage:(NSString*)genericMessage NS_DESIGNATED_INITIALIZER;

/// Nil when a value is missing from the archive or has another type.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

/// The code in `KivoErrorDomain`; the message is the localized description, the generic message the failure reason.
- (NSError*)asNSError;

/// The response code's name, such as "STATUS_INVALID_SESSION".
@property (nonatomic, copy) NSString* errorName;

/// The failure in English.
@property (nonatomic, copy) NSString* message;

/// The response code's number, 1001 to 3020.
@property (nonatomic) NSInteger code;

/// "Processing error", "Document scan error" or "Face scan error".
@property (nonatomic, copy) NSString* genericMessage;

@end

/// An outcome as one object. Exactly one of success and error is set. Outcomes with equal contents are equal.
__attribute__((visibility("default")))
@interface ObjCResult : NSObject<NSSecureCoding> {
@private
    IdvResult* _success;
    ObjCError* _error;
}

/// Nil when `success` is nil.
- (nullable instancetype)initWithSuccess:(IdvResult*)success NS_DESIGNATED_INITIALIZER;

/// Nil when `error` is nil.
- (nullable instancetype)initWithError:(ObjCError*)error NS_DESIGNATED_INITIALIZER;

/// Nil when the archive does not hold exactly one of the two.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

- (instancetype)init __attribute__((unavailable("use initWithSuccess: or initWithError:")));
+ (instancetype)new __attribute__((unavailable("use initWithSuccess: or initWithError:")));

@property (nonatomic, readonly) ObjCResultStatus status;

/// Nil on failure.
@property (nonatomic, readonly, retain, nullable) IdvResult* success;

/// Nil on success.
@property (nonatomic, readonly, retain, nullable) ObjCError* error;

@end

NS_ASSUME_NONNULL_END
