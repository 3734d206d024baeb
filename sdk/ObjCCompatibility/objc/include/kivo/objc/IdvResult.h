#pragma once

#import <kivo/objc/IdvEvents.h>
#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A successful outcome: the step of the session that succeeded, and its data.
///
/// The library keeps no reference to a result that it has delivered; the host may change and share the result.
__attribute__((visibility("default")))
@interface IdvResult : KivoObject

- (instancetype)initWithData:(NSString*)data responseType:(IdvEvents)responseType;

/// The activation code for `IdvEventsSCAN_QR_CODE` and `IdvEventsUPLOAD_DOCUMENT`, empty for scans, otherwise the
/// session's transaction identifier.
@property (nonatomic, copy) NSString* data;

@property (nonatomic) IdvEvents responseType;

@end

NS_ASSUME_NONNULL_END
