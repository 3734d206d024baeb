#import "Host.h"

#include <stdatomic.h>

static atomic_long aliveCaptures;

@implementation Captured

- (instancetype)init {
    self = [super init];
    atomic_fetch_add(&aliveCaptures, 1);
    return self;
}

- (void)dealloc {
    atomic_fetch_sub(&aliveCaptures, 1);
    [super dealloc];
}

+ (NSInteger)alive {
    return atomic_load(&aliveCaptures);
}

@end

@implementation Host

- (instancetype)init {
    self = [super init];
    _changed = [NSCondition new];
    _results = [NSMutableArray new];
    return self;
}

- (void)dealloc {
    [_changed release];
    [_results release];
    [super dealloc];
}

- (void)add:(ObjCResult*)result {
    [_changed lock];
    [_results addObject:result];
    [_changed signal];
    [_changed unlock];
}

- (void)withCompletion:(void (^)(KivoCompletion))call {
    Captured* const captured = [Captured new];
    call(^(ObjCResult* result) {
        [self add:[Captured alive] > 0 && captured ? result : nil];
    });
    [captured release];
}

- (ObjCResult*)resultOf:(void (^)(KivoCompletion))call {
    [_results removeAllObjects];
    [self withCompletion:call];
    [_changed lock];
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while ([_results count] == 0 && [_changed waitUntilDate:limit]) {
    }
    [_changed waitUntilDate:[NSDate dateWithTimeIntervalSinceNow:0.005]];
    ObjCResult* const result = [_results count] == 1 ? [[[_results lastObject] retain] autorelease] : nil;
    [_changed unlock];
    return result;
}

+ (BOOL)waitUntilNothingIsCaptured {
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while ([Captured alive] > 0 && [limit timeIntervalSinceNow] > 0) {
        [NSThread sleepForTimeInterval:0.001];
    }
    return [Captured alive] == 0;
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
