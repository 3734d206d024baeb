#pragma once

#import <Foundation/Foundation.h>

/// Whether the session named the documents that a person may choose from.
typedef NS_ENUM(NSInteger, DocumentListConfigurationStatus) {
    /// The document choice has not been shown in this process yet.
    DocumentListConfigurationStatusNotConfigured = 0,
    /// The choice was last shown without a list from the session.
    DocumentListConfigurationStatusNotAvailable = 1,
    /// The choice was last shown with a list from the session.
    DocumentListConfigurationStatusAvailable = 2,
};
