#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The subject of a call to acquire or upload.
typedef NS_ENUM(NSInteger, AcquisitionObject) {
    AcquisitionObjectActivationCode = 0,    ///< The activation code, typed or scanned.
    AcquisitionObjectNfcScan = 1,           ///< A document's chip and printed page.
    AcquisitionObjectMrzScan = 2,           ///< The same screen as for AcquisitionObjectNfcScan.
    AcquisitionObjectFacemapScan = 3,       ///< A face liveness scan.
    AcquisitionObjectSelfieImage = 4,       ///< Upload only.
    AcquisitionObjectDocumentMainImage = 5, ///< Upload only.
    AcquisitionObjectDocumentBackImage = 6, ///< Upload only.
    AcquisitionObjectOcrScan = 7,           ///< An optical scan of another ID card.
};

/// Names acquisition objects.
__attribute__((visibility("default")))
@interface AcquisitionObjectHelper : NSObject

/// The name in capitals, such as "NFC_SCAN"; empty for any other integer.
+ (NSString*)acquisitionObjectNameFrom:(AcquisitionObject)object;

@end

NS_ASSUME_NONNULL_END
