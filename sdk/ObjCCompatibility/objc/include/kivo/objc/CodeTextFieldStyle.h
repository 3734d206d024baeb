#pragma once

#import <Foundation/Foundation.h>

/// The form in which a person types the activation code.
typedef NS_ENUM(NSInteger, CodeTextFieldStyle) {
    /// One text field for the whole code.
    CodeTextFieldStyleSingle = 0,
    /// Six boxes of one character each.
    CodeTextFieldStyleBoxed = 1,
};
