#pragma once

#import <kivo/objc/KivoObjC.h>

/// Something that a completion captures; counts how many are alive.
@interface Captured : NSObject
+ (NSInteger)alive;
@end

/// A host in plain Objective-C: hands out completions that capture something, and keeps what they are called with.
@interface Host : NSObject {
@private
    NSCondition* _changed;
    NSMutableArray* _results;
}

/// A new completion with a `Captured` of its own. It lives on the heap no longer than its copies do.
- (void)withCompletion:(void (^)(KivoCompletion completion))call;

/// Waits for the next result to the call, and gives a second one the chance to show itself; nil if none or two came.
- (ObjCResult*)resultOf:(void (^)(KivoCompletion completion))call;

/// Waits until nothing that was captured is left.
+ (BOOL)waitUntilNothingIsCaptured;

+ (AcquisitionConfig*)config;

@end
