#pragma once

#import <Foundation/Foundation.h>

/// The appearance that a person has chosen: dark letters on light ground, or light letters on dark ground.
typedef NS_ENUM(NSInteger, KivoUserInterfaceStyle) {
    KivoUserInterfaceStyleLight,
    KivoUserInterfaceStyleDark,
};
