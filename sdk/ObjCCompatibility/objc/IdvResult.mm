#import "Native.h"
#import "Values.h"

#include <kivo/IdvResult.hpp>
#import <kivo/objc/IdvResult.h>

using kivo::objc::enumeration;
using kivo::objc::fromText;
using kivo::objc::toText;

namespace {

kivo::IdvResult& native(IdvResult* result) {
    return *kivo::objc::native<kivo::IdvResult>(result);
}

} // namespace

@implementation IdvResult

- (instancetype)initWithData:(NSString*)data responseType:(IdvEvents)responseType {
    return [super
        initWithNative:std::make_shared<kivo::IdvResult>(fromText(data), enumeration<kivo::IdvEvents>(responseType))];
}

- (NSString*)data {
    return toText(native(self).data());
}

- (void)setData:(NSString*)data {
    native(self).setData(fromText(data));
}

- (IdvEvents)responseType {
    return static_cast<IdvEvents>(native(self).responseType());
}

- (void)setResponseType:(IdvEvents)responseType {
    native(self).setResponseType(enumeration<kivo::IdvEvents>(responseType));
}

@end
