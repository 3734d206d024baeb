#import "Properties.h"

#include <kivo/AcquisitionConfig.hpp>
#import <kivo/objc/AcquisitionConfig.h>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::toText;

namespace {

kivo::AcquisitionConfig& native(AcquisitionConfig* config) {
    return *kivo::objc::native<kivo::AcquisitionConfig>(config);
}

/// The text archived under `key`; nil when there is none.
NSString* archivedText(NSCoder* coder, NSString* key) {
    const id text = [coder decodeObjectForKey:key];
    return [text isKindOfClass:[NSString class]] ? text : nil;
}

BOOL hasArchivedInteger(NSCoder* coder, NSString* key, NSInteger* value) {
    if (![coder containsValueForKey:key]) {
        return NO;
    }
    @try {
        *value = [coder decodeIntegerForKey:key];
        return YES;
    } @catch (NSException*) {
        return NO;
    }
}

} // namespace

@implementation AcquisitionConfig

- (instancetype)initWithEnviroment:(SDKEnv)environment
                  kivo_app_doclist:(NSString*)kivo_app_doclist
                 kivo_expire_grace:(NSString*)kivo_expire_grace
                kivo_facematch_min:(NSString*)kivo_facematch_min
                  kivo_doc_issuers:(NSString*)kivo_doc_issuers
                       kivo_images:(NSString*)kivo_images {
    return [super initWithNative:std::make_shared<kivo::AcquisitionConfig>(
                                     enumeration<kivo::SDKEnv>(environment), fromText(kivo_app_doclist),
                                     fromText(kivo_expire_grace), fromText(kivo_facematch_min),
                                     fromText(kivo_doc_issuers), fromText(kivo_images))];
}

- (nullable instancetype)initWithCoder:(NSCoder*)coder {
    NSInteger environment = 0;
    if (![coder allowsKeyedCoding] || !hasArchivedInteger(coder, @"ENVIRONMENT", &environment)) {
        [self release];
        return nil;
    }
    NSString* const doclist = archivedText(coder, @"KIVO_APP_DOCLIST");
    NSString* const grace = archivedText(coder, @"KIVO_EXPIRE_GRACE");
    NSString* const facematch = archivedText(coder, @"KIVO_FACEMATCH_MIN");
    NSString* const issuers = archivedText(coder, @"KIVO_DOC_ISSUERS");
    NSString* const images = archivedText(coder, @"KIVO_IMAGES");
    const BOOL isEnvironment = kivo::fromRawValue<kivo::SDKEnv>(kivo::objc::toInt(environment)).has_value();
    if (!isEnvironment || !doclist || !grace || !facematch || !issuers || !images) {
        [self release];
        return nil;
    }
    return [self initWithEnviroment:static_cast<SDKEnv>(environment)
                   kivo_app_doclist:doclist
                  kivo_expire_grace:grace
                 kivo_facematch_min:facematch
                   kivo_doc_issuers:issuers
                        kivo_images:images];
}

- (void)encodeWithCoder:(NSCoder*)coder {
    if (![coder allowsKeyedCoding]) {
        [NSException raise:NSInvalidArgumentException format:@"AcquisitionConfig is archived by key only"];
    }
    [coder encodeInteger:self.ENVIRONMENT forKey:@"ENVIRONMENT"];
    [coder encodeObject:self.KIVO_APP_DOCLIST forKey:@"KIVO_APP_DOCLIST"];
    [coder encodeObject:self.KIVO_EXPIRE_GRACE forKey:@"KIVO_EXPIRE_GRACE"];
    [coder encodeObject:self.KIVO_FACEMATCH_MIN forKey:@"KIVO_FACEMATCH_MIN"];
    [coder encodeObject:self.KIVO_DOC_ISSUERS forKey:@"KIVO_DOC_ISSUERS"];
    [coder encodeObject:self.KIVO_IMAGES forKey:@"KIVO_IMAGES"];
}

- (NSDictionary<NSString*, id>*)getAsDictionary {
    NSMutableDictionary* const dictionary = [NSMutableDictionary dictionary];
    for (const auto& [header, value] : native(self).getAsDictionary()) {
        [dictionary setObject:toText(value) forKey:toText(header)];
    }
    return dictionary;
}

KIVO_PROPERTY(SDKEnv, ENVIRONMENT, setENVIRONMENT)
KIVO_PROPERTY(NSString*, KIVO_APP_DOCLIST, setKIVO_APP_DOCLIST)
KIVO_PROPERTY(NSString*, KIVO_EXPIRE_GRACE, setKIVO_EXPIRE_GRACE)
KIVO_PROPERTY(NSString*, KIVO_FACEMATCH_MIN, setKIVO_FACEMATCH_MIN)
KIVO_PROPERTY(NSString*, KIVO_DOC_ISSUERS, setKIVO_DOC_ISSUERS)
KIVO_PROPERTY(NSString*, KIVO_IMAGES, setKIVO_IMAGES)

@end
