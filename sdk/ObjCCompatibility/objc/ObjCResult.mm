#import "Properties.h"

#include <kivo/IdvResult.hpp>
#include <kivo/ObjCResult.hpp>
#import <kivo/objc/IdvResult.h>
#import <kivo/objc/ObjCResult.h>

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

KIVO_FORWARDED(NSString*, data, setData)
KIVO_FORWARDED(IdvEvents, responseType, setResponseType)

@end

namespace {

kivo::ObjCError& native(ObjCError* error) {
    return *kivo::objc::native<kivo::ObjCError>(error);
}

} // namespace

@implementation ObjCError

- (instancetype)initWithErrorName:(NSString*)errorName
                          message:(NSString*)message
                             code:(NSInteger)code
                   genericMessage:(NSString*)genericMessage {
    return [super initWithNative:std::make_shared<kivo::ObjCError>(fromText(errorName), fromText(message), code,
                                                                   fromText(genericMessage))];
}

KIVO_FORWARDED(NSString*, errorName, setErrorName)
KIVO_FORWARDED(NSString*, message, setMessage)
KIVO_FORWARDED(NSInteger, code, setCode)
KIVO_FORWARDED(NSString*, genericMessage, setGenericMessage)

@end

@implementation ObjCResult

@synthesize success = _success;
@synthesize error = _error;

- (instancetype)init {
    [self release];
    [NSException raise:NSInvalidArgumentException format:@"ObjCResult has no init without arguments"];
    return nil;
}

- (nullable instancetype)initWithSuccess:(IdvResult*)success {
    self = [super init];
    _success = [success retain];
    return [self orNilWithout:success];
}

- (nullable instancetype)initWithError:(ObjCError*)error {
    self = [super init];
    _error = [error retain];
    return [self orNilWithout:error];
}

- (ObjCResultStatus)status {
    return _success ? ObjCResultStatusSuccess : ObjCResultStatusFailure;
}

- (instancetype)orNilWithout:(id)content {
    if (!content) {
        [self release];
        return nil;
    }
    return self;
}

- (void)dealloc {
    [_success release];
    [_error release];
    [super dealloc];
}

@end
