#import "HostBlock.h"
#import "Properties.h"

#include <kivo/LuOTPView.hpp>
#import <kivo/objc/KivoControls.h>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>
#include <kivo/ui/LayerStyle.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

using kivo::objc::shown;
using kivo::platform::Accessibility;
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
    // A derived class stands before its base.
    const std::pair<bool, Class> kinds[] = {
        {dynamic_cast<kivo::LuOTPView*>(view), [LuOTPView class]},
        {dynamic_cast<kivo::LuOTPTextField*>(view), [LuOTPTextField class]},
        {dynamic_cast<kivo::platform::TextField*>(view), [KivoTextField class]},
        {dynamic_cast<kivo::platform::Button*>(view), [KivoButton class]},
        {dynamic_cast<kivo::platform::Label*>(view), [KivoLabel class]},
        {dynamic_cast<kivo::platform::Window*>(view), [KivoWindow class]},
    };
    const auto* const kind = std::ranges::find_if(kinds, [](const auto& each) { return each.first; });
    return kind == std::end(kinds) ? [KivoView class] : kind->second;
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
KIVO_FORWARDED(NSString*, accessibilityLabel, setAccessibilityLabel)

- (NSString*)accessibilityHint {
    return shown<NSString*>(native(self).accessibility().hint);
}

- (void)setAccessibilityHint:(NSString*)hint {
    native(self).changeAccessibility([&](Accessibility& it) { it.hint = kivo::objc::fromText(hint); });
}

- (BOOL)isAccessibilityHidden {
    return native(self).accessibility().isHidden;
}

- (void)setAccessibilityHidden:(BOOL)hidden {
    native(self).changeAccessibility([&](Accessibility& it) { it.isHidden = hidden; });
}

- (BOOL)isAccessibilityHeading {
    return native(self).accessibility().isHeading;
}

- (void)setAccessibilityHeading:(BOOL)heading {
    native(self).changeAccessibility([&](Accessibility& it) { it.isHeading = heading; });
}

KIVO_FORWARDED(KivoColor*, backgroundColor, setBackgroundColor)

- (KivoUserInterfaceStyle)userInterfaceStyle {
    return static_cast<KivoUserInterfaceStyle>(native(self).userInterfaceStyle());
}

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

- (void)layoutIfNeeded {
    native(self).layoutIfNeeded();
}

- (void)addTapAction:(void (^)(void))action {
    if (action) {
        native(self).addTapAction([block = kivo::objc::HostBlock{action}] { block(); });
    }
}

- (BOOL)touch {
    return native(self).touch();
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

@implementation KivoView (NativeView)

- (instancetype)initWithNativeView:(std::shared_ptr<View>)view {
    return [self initWithNative:std::move(view)];
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

LayoutConstraint& native(KivoLayoutConstraint* constraint) {
    return *kivo::objc::native<LayoutConstraint>(constraint);
}

} // namespace

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
