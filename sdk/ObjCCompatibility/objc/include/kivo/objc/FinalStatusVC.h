#pragma once

#import <kivo/objc/ActivationResponse.h>
#import <kivo/objc/KivoViewController.h>
#import <kivo/objc/ThemeCustomization.h>

NS_ASSUME_NONNULL_BEGIN

/// Learns that the final status screen has disappeared. Called on the main thread.
@protocol FinalStatusVCDelegate <NSObject>

/// Called 0.1 seconds after the screen begins to disappear, whether the person or the host closed the screen.
- (void)finalStatusDidDisappear;

@end

/// The last screen: the session is complete, and the person can close the application. Main thread only.
///
/// The SDK never presents the screen: a host makes it with `viewControllerWithIdentifier:inStoryboard:ofBundle:` from a
/// scene of the class "FinalStatusVC", sets the properties and presents it.
__attribute__((visibility("default")))
@interface FinalStatusVC : KivoViewController {
@private
    struct KivoFinalStatusListener* _listener;
}

- (instancetype)init __attribute__((unavailable("make the screen from a storyboard")));
+ (instancetype)new __attribute__((unavailable("make the screen from a storyboard")));

/// Retained only from the moment when the screen begins to disappear until `finalStatusDidDisappear` has returned: a
/// delegate that goes before the screen must be set to nil. Nil at first.
@property (nonatomic, assign, nullable) id<FinalStatusVCDelegate> delegate;
/// Gives the title its font and limits the reading size; nil at first, which leaves the SDK's own font and no limits.
@property (nonatomic, retain, nullable) ThemeCustomization* themeObj;
/// The session that ends, kept for the host: the screen does not read the session. Nil at first.
@property (nonatomic, retain, nullable) ActivationResponse* sessionObject;

@end

NS_ASSUME_NONNULL_END
