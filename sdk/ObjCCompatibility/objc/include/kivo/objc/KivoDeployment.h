#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// The addresses of the identity service of each environment.
__attribute__((visibility("default")))
@interface KivoDeployment : KivoObject

/// A deployment without join pages.
- (instancetype)init;
+ (instancetype)new;

/// A copy of the deployment in force: the installed deployment, otherwise the deployment that the library ships.
+ (instancetype)current;

/// Four https addresses in the order of `SDKEnv`. A missing address is empty, and joins of its environment fail.
@property (nonatomic, copy) NSArray<NSString*>* joinPages;

/// Whether the face scan library runs in production mode. NO at first.
@property (nonatomic) BOOL faceTecProduction;

/// The key that the face scan library's vendor gives out for production mode; never logged. Empty at first.
@property (nonatomic, copy) NSString* faceTecProductionKey;

/// Whether pins are required even where no list of pins is found: each request then ends in
/// "UNSECURE_SERVER_PINNING_FAILED". NO at first. A host that ships a list sets the property.
@property (nonatomic) BOOL requiresPins;

/// Puts a copy of this deployment in force. Call `install` before the first join.
- (void)install;

@end

NS_ASSUME_NONNULL_END
