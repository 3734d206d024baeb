#pragma once

#import <kivo/objc/KivoColor.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A rectangle of a screen and the views inside it. Main thread only; lengths are in points.
///
/// An Objective-C++ host makes the Objective-C objects of its own views with `KivoNative.h`.
__attribute__((visibility("default")))
@interface KivoView : KivoObject

/// An empty view.
- (instancetype)init;
+ (instancetype)new;

/// The outlet's name, with which `find:` finds the view. Empty at first.
@property (nonatomic, copy) NSString* identifier;
/// In the coordinates of the superview. A written frame becomes the view's placement, which a layout keeps.
@property (nonatomic) NSRect frame;
@property (nonatomic, getter=isHidden) BOOL hidden;
/// What a screen reader calls the view; the text that the view shows at first.
@property (nonatomic, copy) NSString* accessibilityLabel;
/// What a screen reader tells last, such as the reason why a value was refused; empty at first.
@property (nonatomic, copy) NSString* accessibilityHint;
/// Whether a screen reader leaves out the view and all in it; NO at first.
@property (nonatomic, getter=isAccessibilityHidden) BOOL accessibilityHidden;
/// Whether a label's text is a heading for a screen reader; NO at first.
@property (nonatomic, getter=isAccessibilityHeading) BOOL accessibilityHeading;
/// Nil for a view without a background; nil at first.
@property (nonatomic, copy, nullable) KivoColor* backgroundColor;

/// The appearance of this view: its window's, unless a view around has an appearance of its own.
@property (nonatomic, readonly) KivoUserInterfaceStyle userInterfaceStyle;

@property (nonatomic, readonly) NSArray<KivoView*>* subviews;
/// Moves `view` on top of the other subviews; the view leaves its former superview.
- (void)addSubview:(KivoView*)view;
- (void)removeFromSuperview;

/// This view or the first subview, depth first, with that identifier; nil without such a view.
- (nullable KivoView*)find:(NSString*)identifier;

/// Gives the views of the whole tree their frames. The library does so itself before a screen appears and before a
/// device draws; call the method before frames are read.
- (void)layoutIfNeeded;

/// Calls `action` when a person taps the view, after the actions added before. The view keeps a copy of the block, so a
/// block that retains the view keeps the view alive for ever.
- (void)addTapAction:(void (^)(void))action;

/// A person's tap on this view. Returns whether a view took the tap: a view that is hidden, disabled or covered by
/// another screen takes none.
- (BOOL)touch;

/// The corners' radius. Writing the radius also clips the view to its bounds exactly when the radius is above 0.
@property (nonatomic) double cornerRadiusExt;
@property (nonatomic) double borderWidthExt;
/// Nil for a view without a border colour.
@property (nonatomic, copy, nullable) KivoColor* borderColorExt;
/// The shadow's radius. Writing the radius also makes the shadow black, three fifths opaque, and 2 points below the
/// view.
@property (nonatomic) double shadowRadiusExt;

/// The outline of a screen's main button. The view clips to its bounds for every radius. Nil makes the border clear.
- (void)applyPrimaryButtonStyleWithBorderColor:(nullable KivoColor*)borderColor
                                  cornerRadius:(double)cornerRadius
                                   borderWidth:(double)borderWidth;

@end

/// A handle on the width or the height in a view's placement. The constraint does not retain the view.
__attribute__((visibility("default")))
@interface KivoLayoutConstraint : KivoObject

+ (instancetype)widthOfView:(KivoView*)view;
+ (instancetype)heightOfView:(KivoView*)view;

/// In points; 0 when the view is gone or has no such dimension.
@property (nonatomic) double constant;

@end

NS_ASSUME_NONNULL_END
