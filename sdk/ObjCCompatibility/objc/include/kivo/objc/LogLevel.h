#pragma once

#import <Foundation/Foundation.h>

/// The importance of a log line; a line is printed when its level is not below the threshold.
typedef NS_ENUM(NSInteger, LogLevel) {
    LogLevelVerbose = 1,
    LogLevelDebug = 2,
    LogLevelInfo = 3,
    LogLevelWarning = 4,
    LogLevelError = 5,
};
