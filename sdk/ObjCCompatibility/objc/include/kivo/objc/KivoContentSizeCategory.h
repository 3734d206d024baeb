#pragma once

#import <Foundation/Foundation.h>

/// How large a person wants to read. Ordered from small to large; `Large` is what a new phone is set to.
typedef NS_ENUM(NSInteger, KivoContentSizeCategory) {
    KivoContentSizeCategoryExtraSmall,
    KivoContentSizeCategorySmall,
    KivoContentSizeCategoryMedium,
    KivoContentSizeCategoryLarge,
    KivoContentSizeCategoryExtraLarge,
    KivoContentSizeCategoryExtraExtraLarge,
    KivoContentSizeCategoryExtraExtraExtraLarge,
    KivoContentSizeCategoryAccessibilityMedium,
    KivoContentSizeCategoryAccessibilityLarge,
    KivoContentSizeCategoryAccessibilityExtraLarge,
    KivoContentSizeCategoryAccessibilityExtraExtraLarge,
    KivoContentSizeCategoryAccessibilityExtraExtraExtraLarge,
};
