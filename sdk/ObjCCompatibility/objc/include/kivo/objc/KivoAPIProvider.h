#pragma once

#import <kivo/objc/AcquisitionConfig.h>
#import <kivo/objc/AcquisitionObject.h>
#import <kivo/objc/KivoObject.h>
#import <kivo/objc/KivoViewController.h>
#import <kivo/objc/ObjCResult.h>
#import <kivo/objc/ThemeCustomization.h>

NS_ASSUME_NONNULL_BEGIN

/// Receives the outcome of a call.
///
/// The library copies the block, and releases the copy after the call; for an acquire, when another acquire replaces
/// the block. The block runs inside an autorelease pool of its own. An exception that leaves the block is reported as a
/// diagnostic and goes no further.
typedef void (^KivoCompletion)(ObjCResult* result);

/// A verification session, as an Objective-C host controls it. Made by `KivoSDK`; call its methods on the main thread.
///
/// Every request ends in exactly one call of its `response`. Requests that go to the identity service answer on the
/// library's transport thread, one at a time; requests that fail before they are sent (no session, no network, no
/// attempts left) answer on the calling thread before the call returns. Screens answer on the main thread (see
/// `KivoMainQueue`). A nil `response` drops the outcome.
///
/// Six requests to one server are under way at once; further requests wait, within their 60 seconds, until another
/// request ends. A request is sent once and never repeated.
///
/// Inside the answer to a request, further requests, `resumeInBrowser` and `reset` may be called. The methods for
/// screens (acquire, the context, the theme) may be called only if the answer runs on the main thread.
__attribute__((visibility("default")))
@interface KivoAPIProvider : KivoObject {
@private
    ThemeCustomization* _sdkTheme;
}

/// The session's theme object when the provider was made. Replacing the object here does not change the session.
@property (nonatomic, retain, nullable) ThemeCustomization* sdkTheme;

/// Gives the session another theme; nil for none. Screens already shown keep their theme.
- (void)setThemeWithTheme:(nullable ThemeCustomization*)theme;

/// The view controller on which screens are shown. Without one, acquire shows nothing, logs a warning and does not
/// answer; with a context in no navigation stack and in no window, acquire answers "UNKNOWN_ERROR" on the main queue.
/// The context is held until another context is set.
- (void)setContextWithViewController:(nullable KivoViewController*)viewController;

/// Shows the screen that acquires `object`. `config` is not read: the configuration counts with the join. `response`
/// may be called more than once: a person can deliver a code and then close the screen. A later acquire replaces
/// and releases the response. Objects that are for uploads only, and the ID scan before interface version 16, are
/// ignored without an answer.
- (void)acquireWithAcquisitionObject:(AcquisitionObject)object
                              config:(nullable AcquisitionConfig*)config
                            response:(nullable KivoCompletion)response;

/// Joins the session of an activation code. Succeeds with `IdvEventsJOIN_SESSION` and the transaction identifier; the
/// keychain keeps one session for all interface versions, and a join replaces an earlier session even when the service
/// refuses the join. Status, commit, resuming and screens can use the session in another process; update needs a join
/// through a provider of this version in this process, upload a join in this process. Without a config, a join fails
/// with "INVALID_JOIN_SESSION".
- (void)joinForCode:(NSString*)code
             config:(nullable AcquisitionConfig*)config
           response:(nullable KivoCompletion)response;

/// Reports an action and a message to the session. Succeeds with `IdvEventsUPDATE_SESSION`.
- (void)updateWithAction:(NSString*)action message:(NSString*)message response:(nullable KivoCompletion)response;

/// Asks for the session's status. Succeeds with `IdvEventsSESSION_STATUS` when the service does not refuse; the
/// other members of the answer are not passed on.
- (void)statusWithResponse:(nullable KivoCompletion)response;

/// Commits the session. Succeeds with `IdvEventsCOMMIT_SESSION`.
- (void)commitWithResponse:(nullable KivoCompletion)response;

/// Opens the session's resume page in the person's browser. Does nothing without a session.
- (void)resumeInBrowser;

/// Uploads `data` as evidence of the given kind and counts one attempt. Succeeds with `IdvEventsUPLOAD_DOCUMENT`.
/// Fails with "RETRY_LIMIT_REACHED" when no attempt remains, and before a join of this process has set a limit.
- (void)uploadWithAcquisitionObject:(AcquisitionObject)acquisitionObject
                               data:(NSString*)data
                           response:(nullable KivoCompletion)response;

/// Deletes the stored session and forgets the service's cookies. Requests under way continue. The activation code,
/// the theme, the context and the remaining attempts stay, and the provider is ready for another join.
- (void)reset;

@end

NS_ASSUME_NONNULL_END
