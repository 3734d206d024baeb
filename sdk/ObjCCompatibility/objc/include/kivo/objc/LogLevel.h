#pragma once

#import <Foundation/Foundation.h>

/// How much a log line matters; a line is printed when its level is not below the threshold.
typedef NS_ENUM(NSInteger, LogLevel) {
    LogLevelVerbose = 1,
    LogLevelDebug = 2,
    LogLevelInfo = 3,
    LogLevelWarning = 4,
    LogLevelError = 5,
};
