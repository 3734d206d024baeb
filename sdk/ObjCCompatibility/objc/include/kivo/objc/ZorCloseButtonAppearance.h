#pragma once

#import <kivo/objc/KivoColor.h>
#import <kivo/objc/KivoControls.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoImage.h>

NS_ASSUME_NONNULL_BEGIN

/// The look of the close button on every screen. Main thread only.
///
/// Close buttons are hidden until `closeButtonIsHidden` is set to NO. Lengths are in points; a nil property
/// leaves the storyboard's look, unless its comment says otherwise.
__attribute__((visibility("default")))
@interface ZorCloseButtonAppearance : KivoObject

- (instancetype)init;
+ (instancetype)new;

/// YES at first.
@property (nonatomic) BOOL closeButtonIsHidden;
@property (nonatomic, retain, nullable) KivoImage* closeButtonImage;
@property (nonatomic, retain, nullable) KivoImage* closeButtonBackGroundImage;
/// "Close" at first.
@property (nonatomic, copy) NSString* closeButtonTitle;
@property (nonatomic, copy, nullable) KivoColor* closeButtonBackgroundColor;
@property (nonatomic, copy, nullable) KivoColor* closeButtonTitleColor;
/// 75 at first.
@property (nonatomic) double closeButtonWidth;
/// 35 at first.
@property (nonatomic) double closeButtonHeight;
/// Nil means 17.5, half of the default height.
@property (nonatomic, copy, nullable) NSNumber* closeButtonCornerRadius;
/// "Karbon-Bold" at 17 points, or the system font where "Karbon-Bold" is not installed; nil means the system font.
@property (nonatomic, copy) KivoFont* closeButtonFont;

/// Gives a screen's close button this look. The constraints set the size of the button. Does nothing if an argument is
/// nil.
- (void)applyAppearanceCloseButtonWithCloseButton:(KivoButton*)closeButton
                                  widthConstraint:(KivoLayoutConstraint*)widthConstraint
                                 heightConstraint:(KivoLayoutConstraint*)heightConstraint;

@end

NS_ASSUME_NONNULL_END
