#pragma once

#import <kivo/objc/KivoAPIProvider.h>
#import <kivo/objc/LogLevel.h>

NS_ASSUME_NONNULL_BEGIN

/// The entry point of a host: settings for the whole process, and the session of an interface version.
///
/// Call the methods on the main thread; the settings may be read from any thread.
__attribute__((visibility("default")))
@interface KivoSDK : NSObject

/// A new provider for the interface version that the first two characters of `version` name ("14" to "18").
///
/// All providers of one interface version share one session. `key` becomes part of the device code that a join sends.
/// Nil, and a line on standard output, for any other version.
+ (nullable KivoAPIProvider*)loadForProviderWithKey:(NSString*)key version:(NSString*)version;

/// The threshold of the library's log lines; `LogLevelInfo` by default. The threshold is read once, with the first
/// line that is logged: set the threshold before the first load. An integer above `LogLevelError` silences the log; a
/// few lines, such as those for a change of the network, are printed all the same.
@property (class, nonatomic) LogLevel logLevel;

/// The SDK version text, "183" at first. The library itself does not use it.
@property (class, nonatomic, copy) NSString* VERSION;

/// The version text of the most recent load, also of a rejected load; empty at first.
@property (class, nonatomic, copy) NSString* requestedSDKVersion;

/// Whether screens enforce the session's retry limit; set by every successful join.
@property (class, nonatomic) BOOL shouldApplyRetryLimit;

@end

NS_ASSUME_NONNULL_END
