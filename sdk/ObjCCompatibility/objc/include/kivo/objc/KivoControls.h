#pragma once

#import <kivo/objc/KivoView.h>

NS_ASSUME_NONNULL_BEGIN

/// A view with a text. Make a label, a button or a text field; `init` of this class raises.
__attribute__((visibility("default")))
@interface KivoTextStyled : KivoView

/// The system's font of 17 points at first.
@property (nonatomic, copy) KivoFont* font;
/// Black at first.
@property (nonatomic, copy) KivoColor* textColor;

@end

/// A text that cannot be edited, over as many lines as the text needs.
__attribute__((visibility("default")))
@interface KivoLabel : KivoTextStyled

@property (nonatomic, copy) NSString* text;

@end

/// A button with a title. `addTapAction:` or a storyboard sets the action of a tap.
__attribute__((visibility("default")))
@interface KivoButton : KivoTextStyled

@property (nonatomic, copy) NSString* title;
@property (nonatomic, getter=isEnabled) BOOL enabled;

@end

/// One line of text that a person edits.
__attribute__((visibility("default")))
@interface KivoTextField : KivoTextStyled

@property (nonatomic, copy) NSString* text;
/// The text that the empty field shows; empty at first.
@property (nonatomic, copy) NSString* placeholder;
@property (nonatomic, getter=isEnabled) BOOL enabled;

/// Types `text` as a person does. Returns whether the field took the text: a field that a person cannot reach takes
/// none.
- (BOOL)insertText:(NSString*)text;

@end

NS_ASSUME_NONNULL_END
