#pragma once

#import <kivo/objc/KivoObject.h>
#import <kivo/objc/SDKEnv.h>

NS_ASSUME_NONNULL_BEGIN

/// The names under which an acquisition configuration travels with the join.
__attribute__((visibility("default")))
@interface AcquisitionConfigKeys : NSObject

@property (class, nonatomic, readonly) NSString* ENVIRONMENT;
@property (class, nonatomic, readonly) NSString* KIVO_APP_DOCLIST;
@property (class, nonatomic, readonly) NSString* KIVO_EXPIRE_GRACE;
@property (class, nonatomic, readonly) NSString* KIVO_FACEMATCH_MIN;
@property (class, nonatomic, readonly) NSString* KIVO_DOC_ISSUERS;
@property (class, nonatomic, readonly) NSString* KIVO_IMAGES;

@end

/// A host's requirements for a session: the environment and five constraints, which the library passes on unread.
///
/// The identity service defines the meaning of the constraint texts. A join reads a configuration during the call;
/// later changes have no effect on the session. Configurations with the same
/// values are equal; do not change a configuration while a set or a dictionary holds it.
__attribute__((visibility("default")))
@interface AcquisitionConfig : KivoObject<NSSecureCoding>

- (instancetype)initWithEnviroment:(SDKEnv)environment
                  kivo_app_doclist:(NSString*)kivo_app_doclist
                 kivo_expire_grace:(NSString*)kivo_expire_grace
                kivo_facematch_min:(NSString*)kivo_facematch_min
                  kivo_doc_issuers:(NSString*)kivo_doc_issuers
                       kivo_images:(NSString*)kivo_images NS_DESIGNATED_INITIALIZER;

/// Reads the six values of a keyed archive under the property names. Nil when a value is missing or has another type,
/// or when the coder is not keyed.
- (nullable instancetype)initWithCoder:(NSCoder*)coder;

/// The six values under the names of `AcquisitionConfigKeys`, the environment by its name. Empty when `ENVIRONMENT`
/// holds an integer that is not an environment.
- (NSDictionary<NSString*, id>*)getAsDictionary;

@property (nonatomic) SDKEnv ENVIRONMENT;
@property (nonatomic, copy) NSString* KIVO_APP_DOCLIST;
@property (nonatomic, copy) NSString* KIVO_EXPIRE_GRACE;
@property (nonatomic, copy) NSString* KIVO_FACEMATCH_MIN;
@property (nonatomic, copy) NSString* KIVO_DOC_ISSUERS;
@property (nonatomic, copy) NSString* KIVO_IMAGES;

@end

NS_ASSUME_NONNULL_END
