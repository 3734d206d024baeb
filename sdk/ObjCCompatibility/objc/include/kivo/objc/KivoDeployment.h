#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// Where the identity service of each environment is found.
__attribute__((visibility("default")))
@interface KivoDeployment : KivoObject

/// A deployment without join pages.
- (instancetype)init;
+ (instancetype)new;

/// A copy of the deployment in force: the installed one, else the one that the library ships.
+ (instancetype)current;

/// Four https addresses in the order of `SDKEnv`. A missing one is empty, and joins there fail.
@property (nonatomic, copy) NSArray<NSString*>* joinPages;

/// Whether the face scan library runs in production mode. NO at first.
@property (nonatomic) BOOL faceTecProduction;

/// The key that the face scan library's vendor gives out for production mode; never logged. Empty at first.
@property (nonatomic, copy) NSString* faceTecProductionKey;

/// Whether requests go to pinned servers even where no list of pins is found: each then ends in
/// "UNSECURE_SERVER_PINNING_FAILED". NO at first. A host that ships a list sets it.
@property (nonatomic) BOOL requiresPins;

/// Puts this deployment in force, as it is now. Call it before the first join.
- (void)install;

@end

NS_ASSUME_NONNULL_END
