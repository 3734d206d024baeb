#pragma once

#import <kivo/objc/IdvEvents.h>
#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A successful outcome: the step of the session that succeeded, and its data.
///
/// The library keeps no reference to a result that it has delivered; the host may change and share the result. Results
/// with the same values are equal. The description leaves the data out.
__attribute__((visibility("default")))
@interface IdvResult : KivoObject<NSSecureCoding>

- (instancetype)initWithData:(NSString*)data responseType:(IdvEvents)responseType NS_DESIGNATED_INITIALIZER;

/// Nil when a value is missing from the archive or has another type.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

/// The activation code for `IdvEventsSCAN_QR_CODE` and `IdvEventsUPLOAD_DOCUMENT`, empty for scans, otherwise the
/// session's transaction identifier.
@property (nonatomic, copy) NSString* data;

@property (nonatomic) IdvEvents responseType;

@end

NS_ASSUME_NONNULL_END
