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

/// The outlet's name, by which `find:` knows the view. Empty at first.
@property (nonatomic, copy) NSString* identifier;
/// In the coordinates of the superview. Written, it becomes the view's placement, so that a layout keeps it.
@property (nonatomic) NSRect frame;
@property (nonatomic, getter=isHidden) BOOL hidden;

@property (nonatomic, readonly) NSArray<KivoView*>* subviews;
/// Puts `view` on top of the other subviews, taking it from where it was.
- (void)addSubview:(KivoView*)view;
- (void)removeFromSuperview;

/// This view or the first one below it, depth first, with that identifier; nil when there is none.
- (nullable KivoView*)find:(NSString*)identifier;

/// The corners' radius. Written, it also clips the view to its bounds exactly when it is above 0.
@property (nonatomic) double cornerRadiusExt;
@property (nonatomic) double borderWidthExt;
/// Nil where the view has none.
@property (nonatomic, copy, nullable) KivoColor* borderColorExt;
/// The shadow's radius. Written, it also makes the shadow black, three fifths opaque, and 2 points below the view.
@property (nonatomic) double shadowRadiusExt;

/// The outline of a screen's main button. It clips to its bounds whatever the radius. Nil makes the border clear.
- (void)applyPrimaryButtonStyleWithBorderColor:(nullable KivoColor*)borderColor
                                  cornerRadius:(double)cornerRadius
                                   borderWidth:(double)borderWidth;

@end

/// A button with a title. What a tap does is set in a storyboard or in C++.
__attribute__((visibility("default")))
@interface KivoButton : KivoView

@property (nonatomic, copy) NSString* title;
@property (nonatomic, copy) KivoFont* font;
@property (nonatomic, getter=isEnabled) BOOL enabled;

@end

/// A handle on the width or the height that a view's placement gives it. It does not hold the view.
__attribute__((visibility("default")))
@interface KivoLayoutConstraint : KivoObject

+ (instancetype)widthOfView:(KivoView*)view;
+ (instancetype)heightOfView:(KivoView*)view;

/// In points; 0 when the view is gone or has no such dimension.
@property (nonatomic) double constant;

@end

NS_ASSUME_NONNULL_END
