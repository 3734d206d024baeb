#include "Properties.h"

#include <kivo/LuOTPView.hpp>
#import <kivo/objc/KivoNative.h>
#include <kivo/ui/LayerStyle.hpp>

using kivo::objc::shown;
using kivo::platform::Button;
using kivo::platform::LayoutConstraint;
using kivo::platform::View;

namespace {

View& native(KivoView* view) {
    return *kivo::objc::native<View>(view);
}

std::optional<kivo::platform::Color> nativeColor(KivoColor* color) {
    return color ? std::optional{[color nativeColor]} : std::nullopt;
}

/// The wrapper class for the view's class.
Class classOf(View* view) {
    if (dynamic_cast<kivo::LuOTPView*>(view)) {
        return [LuOTPView class];
    }
    if (dynamic_cast<kivo::LuOTPTextField*>(view)) {
        return [LuOTPTextField class];
    }
    return dynamic_cast<Button*>(view) ? [KivoButton class] : [KivoView class];
}

} // namespace

@implementation KivoView

- (instancetype)init {
    return [super initWithNative:std::make_shared<View>()];
}

+ (instancetype)new {
    return [[self alloc] init];
}

KIVO_FORWARDED(NSString*, identifier, setIdentifier)

- (NSRect)frame {
    const auto& frame = native(self).frame();
    return NSMakeRect(frame.left(), frame.top(), frame.size.width, frame.size.height);
}

- (void)setFrame:(NSRect)frame {
    native(self).setPlacement({.top = NSMinY(frame),
                               .left = NSMinX(frame),
                               .width = NSWidth(frame),
                               .height = NSHeight(frame),
                               .ignoresSafeArea = true});
    native(self).setFrame(
        {.origin = {NSMinX(frame), NSMinY(frame)}, .size = {.width = NSWidth(frame), .height = NSHeight(frame)}});
}

KIVO_FORWARDED(BOOL, isHidden, setHidden)

- (NSArray<KivoView*>*)subviews {
    NSMutableArray* const subviews = [NSMutableArray array];
    for (const auto& subview : native(self).subviews()) {
        [subviews addObject:[KivoView viewWithNative:subview]];
    }
    return subviews;
}

- (void)addSubview:(KivoView*)view {
    if (view) {
        native(self).addSubview([view nativeView]);
    }
}

- (void)removeFromSuperview {
    native(self).removeFromSuperview();
}

- (nullable KivoView*)find:(NSString*)identifier {
    return [KivoView viewWithNative:native(self).find(kivo::objc::fromText(identifier))];
}

- (double)cornerRadiusExt {
    return kivo::ui::cornerRadiusExt(native(self));
}

- (void)setCornerRadiusExt:(double)radius {
    kivo::ui::setCornerRadiusExt(native(self), radius);
}

- (double)borderWidthExt {
    return kivo::ui::borderWidthExt(native(self));
}

- (void)setBorderWidthExt:(double)width {
    kivo::ui::setBorderWidthExt(native(self), width);
}

- (nullable KivoColor*)borderColorExt {
    return shown<KivoColor*>(kivo::ui::borderColorExt(native(self)));
}

- (void)setBorderColorExt:(nullable KivoColor*)color {
    kivo::ui::setBorderColorExt(native(self), nativeColor(color));
}

- (double)shadowRadiusExt {
    return kivo::ui::shadowRadiusExt(native(self));
}

- (void)setShadowRadiusExt:(double)radius {
    kivo::ui::setShadowRadiusExt(native(self), radius);
}

- (void)applyPrimaryButtonStyleWithBorderColor:(nullable KivoColor*)borderColor
                                  cornerRadius:(double)cornerRadius
                                   borderWidth:(double)borderWidth {
    kivo::ui::applyPrimaryButtonStyle(native(self), nativeColor(borderColor).value_or(kivo::platform::Color::clear()),
                                      cornerRadius, borderWidth);
}

@end

@implementation KivoView (Native)

+ (nullable KivoView*)viewWithNative:(const std::shared_ptr<View>&)view {
    return [[[classOf(view.get()) alloc] initWithNative:view] autorelease];
}

- (std::shared_ptr<View>)nativeView {
    return kivo::objc::native<View>(self);
}

@end

namespace {

Button& native(KivoButton* button) {
    return static_cast<Button&>(native(static_cast<KivoView*>(button)));
}

LayoutConstraint& native(KivoLayoutConstraint* constraint) {
    return *kivo::objc::native<LayoutConstraint>(constraint);
}

} // namespace

@implementation KivoButton

- (instancetype)init {
    return [super initWithNative:std::shared_ptr<View>{std::make_shared<Button>()}];
}

KIVO_FORWARDED(NSString*, title, setTitle)
KIVO_FORWARDED(KivoFont*, font, setFont)
KIVO_FORWARDED(BOOL, isEnabled, setEnabled)

@end

@implementation KivoLayoutConstraint

+ (instancetype)widthOfView:(KivoView*)view {
    return [self of:view attribute:LayoutConstraint::Attribute::width];
}

+ (instancetype)heightOfView:(KivoView*)view {
    return [self of:view attribute:LayoutConstraint::Attribute::height];
}

+ (instancetype)of:(KivoView*)view attribute:(LayoutConstraint::Attribute)attribute {
    return kivo::objc::wrapped<KivoLayoutConstraint>(
        std::make_shared<LayoutConstraint>(kivo::objc::native<View>(view), attribute));
}

KIVO_FORWARDED(double, constant, setConstant)

@end

@implementation KivoLayoutConstraint (Native)

+ (nullable KivoLayoutConstraint*)constraintWithNative:(const std::shared_ptr<LayoutConstraint>&)constraint {
    return kivo::objc::wrapped<KivoLayoutConstraint>(constraint);
}

- (std::shared_ptr<LayoutConstraint>)nativeConstraint {
    return kivo::objc::native<LayoutConstraint>(self);
}

@end
