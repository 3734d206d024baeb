#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

/// The environments of the identity service; each has its own join page (see `KivoDeployment`).
typedef NS_ENUM(NSInteger, SDKEnv) {
    SDKEnvPROD = 0,
    SDKEnvPREPROD = 1,
    SDKEnvTEST = 2,
    SDKEnvDEV = 3,
};

/// Names environments.
__attribute__((visibility("default")))
@interface SDKEnvHelper : NSObject

/// "PROD", "PREPROD", "TEST" or "DEV", as sent in "target-env"; empty for any other integer.
+ (NSString*)environmentNameFrom:(SDKEnv)environment;

@end

NS_ASSUME_NONNULL_END
