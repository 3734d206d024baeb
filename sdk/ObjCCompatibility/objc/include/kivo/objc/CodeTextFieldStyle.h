#pragma once

#import <Foundation/Foundation.h>

/// How the activation code is typed.
typedef NS_ENUM(NSInteger, CodeTextFieldStyle) {
    /// One text field for the whole code.
    CodeTextFieldStyleSingle = 0,
    /// Six boxes of one character each.
    CodeTextFieldStyleBoxed = 1,
};
