#pragma once

#import <kivo/objc/IdvResult.h>
#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// Whether an `ObjCResult` holds a success or an error.
typedef NS_ENUM(NSInteger, ObjCResultStatus) {
    ObjCResultStatusSuccess = 0,
    ObjCResultStatusFailure = 1,
};

/// A failure as plain values.
__attribute__((visibility("default")))
@interface ObjCError : KivoObject

- (instancetype)initWithErrorName:(NSString*)errorName
                          message:(NSString*)message
                             code:(NSInteger)code
                   genericMessage:(NSString*)genericMessage;

/// The response code's name, such as "STATUS_INVALID_SESSION".
@property (nonatomic, copy) NSString* errorName;

/// The failure in English.
@property (nonatomic, copy) NSString* message;

/// The response code's number, 1001 to 3020.
@property (nonatomic) NSInteger code;

/// "Processing error", "Document scan error" or "Face scan error".
@property (nonatomic, copy) NSString* genericMessage;

@end

/// An outcome as one object. Exactly one of success and error is set.
__attribute__((visibility("default")))
@interface ObjCResult : NSObject {
@private
    IdvResult* _success;
    ObjCError* _error;
}

/// Nil when `success` is nil.
- (nullable instancetype)initWithSuccess:(IdvResult*)success;

/// Nil when `error` is nil.
- (nullable instancetype)initWithError:(ObjCError*)error;

- (instancetype)init __attribute__((unavailable("use initWithSuccess: or initWithError:")));
+ (instancetype)new __attribute__((unavailable("use initWithSuccess: or initWithError:")));

@property (nonatomic, readonly) ObjCResultStatus status;

/// Nil on failure.
@property (nonatomic, readonly, retain, nullable) IdvResult* success;

/// Nil on success.
@property (nonatomic, readonly, retain, nullable) ObjCError* error;

@end

NS_ASSUME_NONNULL_END
