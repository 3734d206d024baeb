#pragma once

#import <Foundation/Foundation.h>

/// The reading size that a person has chosen, from small to large; `Large` is the setting of a new phone.
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
