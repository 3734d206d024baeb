#pragma once

#import <kivo/objc/IdvEvents.h>
#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A successful outcome: which step of the session succeeded, and what it yielded.
///
/// The library keeps no reference once it has handed a result over; the host may change and share it as it likes.
__attribute__((visibility("default")))
@interface IdvResult : KivoObject

- (instancetype)initWithData:(NSString*)data responseType:(IdvEvents)responseType;

/// The activation code for `IdvEventsSCAN_QR_CODE` and `IdvEventsUPLOAD_DOCUMENT`, empty for scans, else the session's
/// transaction identifier.
@property (nonatomic, copy) NSString* data;

@property (nonatomic) IdvEvents responseType;

@end

NS_ASSUME_NONNULL_END
