#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The step of a session that a success reports.
typedef NS_ENUM(NSInteger, IdvEvents) {
    IdvEventsSCAN_QR_CODE = 0,    ///< A code was typed or scanned; the data is the code.
    IdvEventsJOIN_SESSION = 1,    ///< A session was joined; the data is its transaction identifier.
    IdvEventsUPDATE_SESSION = 2,  ///< An update was accepted.
    IdvEventsSESSION_STATUS = 3,  ///< A status request was accepted.
    IdvEventsCOMMIT_SESSION = 4,  ///< A commit was accepted.
    IdvEventsUPLOAD_DOCUMENT = 5, ///< An upload was accepted.
    IdvEventsDOCUMENT_SCAN = 6,   ///< A document was read, at least its chip.
    IdvEventsFACE_SCAN = 7,       ///< A face liveness scan succeeded.
    IdvEventsOCR_SCAN = 8,        ///< An ID card was scanned.
};

/// Names events.
__attribute__((visibility("default")))
@interface IdvEventsHelper : NSObject

/// The event's name, such as "JOIN_SESSION"; empty for any other integer.
+ (NSString*)eventNameFrom:(IdvEvents)event;

@end

NS_ASSUME_NONNULL_END
