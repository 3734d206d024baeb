#import "Host.h"

#include <stdatomic.h>

static atomic_long alive;

@implementation Host

- (instancetype)init {
    self = [super init];
    atomic_fetch_add(&alive, 1);
    return self;
}

- (void)dealloc {
    atomic_fetch_sub(&alive, 1);
    [super dealloc];
}

+ (NSInteger)alive {
    return atomic_load(&alive);
}

+ (BOOL)waitUntilNoneIsAlive {
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while ([Host alive] > 0 && [limit timeIntervalSinceNow] > 0) {
        [NSThread sleepForTimeInterval:0.001];
    }
    return [Host alive] == 0;
}

+ (KivoCompletion)completionThatCalls:(KivoCompletion)answer {
    Host* const captured = [[Host new] autorelease];
    return [[^(ObjCResult* result) {
        answer([Host alive] > 0 && captured ? result : nil);
    } copy] autorelease];
}

+ (AcquisitionConfig*)config {
    return [[[AcquisitionConfig alloc] initWithEnviroment:SDKEnvTEST
                                         kivo_app_doclist:@"PASSPORT"
                                        kivo_expire_grace:@"P6M"
                                       kivo_facematch_min:@"0.8"
                                         kivo_doc_issuers:@"UTO"
                                              kivo_images:@"face"] autorelease];
}

@end
