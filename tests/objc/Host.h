#pragma once

#import <kivo/objc/KivoObjC.h>

/// A host in plain Objective-C. Its completions capture an instance, so that the instances alive count the completions.
@interface Host : NSObject

+ (NSInteger)alive;

/// Waits until no instance is left.
+ (BOOL)waitUntilNoneIsAlive;

/// A completion that passes its result on to `answer`, or passes nil if a captured object is gone. The autorelease pool
/// owns the completion.
+ (KivoCompletion)completionThatCalls:(KivoCompletion)answer;

+ (AcquisitionConfig*)config;

@end

/// The host's own screen, with a button that asks for the activation code.
@interface StartScreen : KivoViewController {
    NSMutableArray* events;
    KivoAPIProvider* session;
}

/// The calls of the life cycle so far, and the code.
@property (nonatomic, readonly) NSArray* events;

@end
