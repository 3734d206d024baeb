#pragma once

#import <Foundation/Foundation.h>

/// Whether the session named the documents that a person may choose from.
typedef NS_ENUM(NSInteger, DocumentListConfigurationStatus) {
    /// The document choice has not been shown in this process yet.
    DocumentListConfigurationStatusNotConfigured = 0,
    /// It was last shown without a list from the session.
    DocumentListConfigurationStatusNotAvailable = 1,
    /// It was last shown with one.
    DocumentListConfigurationStatusAvailable = 2,
};
