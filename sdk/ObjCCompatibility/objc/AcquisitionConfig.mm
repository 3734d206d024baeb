#import "Properties.h"
#import "Value.h"

#include <kivo/AcquisitionConfig.hpp>
#import <kivo/objc/AcquisitionConfig.h>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::toText;

namespace {

kivo::AcquisitionConfig& native(AcquisitionConfig* config) {
    return *kivo::objc::native<kivo::AcquisitionConfig>(config);
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
    kivo::objc::ArchiveReader archive{coder};
    const auto environment = archive.integer(@"ENVIRONMENT");
    self = [self initWithEnviroment:static_cast<SDKEnv>(environment)
                   kivo_app_doclist:archive.text(@"KIVO_APP_DOCLIST")
                  kivo_expire_grace:archive.text(@"KIVO_EXPIRE_GRACE")
                 kivo_facematch_min:archive.text(@"KIVO_FACEMATCH_MIN")
                   kivo_doc_issuers:archive.text(@"KIVO_DOC_ISSUERS")
                        kivo_images:archive.text(@"KIVO_IMAGES")];
    if (archive.isDamaged() || !kivo::fromRawValue<kivo::SDKEnv>(kivo::objc::toInt(environment))) {
        [self release];
        return nil;
    }
    return self;
}

KIVO_VALUE(@"ENVIRONMENT", @"KIVO_APP_DOCLIST", @"KIVO_EXPIRE_GRACE", @"KIVO_FACEMATCH_MIN", @"KIVO_DOC_ISSUERS",
           @"KIVO_IMAGES")

- (NSString*)description {
    return [NSString stringWithFormat:@"<AcquisitionConfig: %@, documents \"%@\", grace \"%@\", face match \"%@\", "
                                      @"issuers \"%@\", images \"%@\">",
                                      [SDKEnvHelper environmentNameFrom:self.ENVIRONMENT], self.KIVO_APP_DOCLIST,
                                      self.KIVO_EXPIRE_GRACE, self.KIVO_FACEMATCH_MIN, self.KIVO_DOC_ISSUERS,
                                      self.KIVO_IMAGES];
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
