#import "Properties.h"
#import "Value.h"

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

- (nullable instancetype)initWithCoder:(NSCoder*)coder {
    kivo::objc::ArchiveReader archive{coder};
    const auto responseType = archive.integer(@"responseType");
    self = [self initWithData:archive.text(@"data") responseType:static_cast<IdvEvents>(responseType)];
    if (archive.isDamaged() || !kivo::fromRawValue<kivo::IdvEvents>(kivo::objc::toInt(responseType))) {
        [self release];
        return nil;
    }
    return self;
}

KIVO_VALUE(@"data", @"responseType")

// Without the data, which may be an activation code.
- (NSString*)description {
    return [NSString stringWithFormat:@"<IdvResult: %@>", [IdvEventsHelper eventNameFrom:self.responseType]];
}

KIVO_FORWARDED(NSString*, data, setData)
KIVO_FORWARDED(IdvEvents, responseType, setResponseType)

@end

namespace {

kivo::ObjCError& native(ObjCError* error) {
    return *kivo::objc::native<kivo::ObjCError>(error);
}

} // namespace

NSString* const KivoErrorDomain = @"KivoErrorDomain";
NSString* const KivoErrorNameKey = @"KivoErrorName";

@implementation ObjCError

- (instancetype)initWithErrorName:(NSString*)errorName
                          message:(NSString*)message
                             code:(NSInteger)code
                   genericMessage:(NSString*)genericMessage {
    return [super initWithNative:std::make_shared<kivo::ObjCError>(fromText(errorName), fromText(message), code,
                                                                   fromText(genericMessage))];
}

- (nullable instancetype)initWithCoder:(NSCoder*)coder {
    kivo::objc::ArchiveReader archive{coder};
    self = [self initWithErrorName:archive.text(@"errorName")
                           message:archive.text(@"message")
                              code:archive.integer(@"code")
                    genericMessage:archive.text(@"genericMessage")];
    if (archive.isDamaged()) {
        [self release];
        return nil;
    }
    return self;
}

KIVO_VALUE(@"errorName", @"message", @"code", @"genericMessage")

- (NSString*)description {
    return [NSString
        stringWithFormat:@"<ObjCError: %@, %ld, %@>", self.errorName, static_cast<long>(self.code), self.message];
}

- (NSError*)asNSError {
    return [NSError errorWithDomain:KivoErrorDomain
                               code:self.code
                           userInfo:@{
                               NSLocalizedDescriptionKey : self.message,
                               NSLocalizedFailureReasonErrorKey : self.genericMessage,
                               KivoErrorNameKey : self.errorName
                           }];
}

KIVO_FORWARDED(NSString*, errorName, setErrorName)
KIVO_FORWARDED(NSString*, message, setMessage)
KIVO_FORWARDED(NSInteger, code, setCode)
KIVO_FORWARDED(NSString*, genericMessage, setGenericMessage)

@end

@implementation ObjCResult

@synthesize success = _success;
@synthesize error = _error;

KIVO_NO_INIT

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

- (nullable instancetype)initWithCoder:(NSCoder*)coder {
    kivo::objc::ArchiveReader archive{coder};
    IdvResult* const success = archive.objectOrNil<IdvResult>(@"success");
    ObjCError* const error = archive.objectOrNil<ObjCError>(@"error");
    if (archive.isDamaged() || (success && error)) {
        [self release];
        return nil;
    }
    return success ? [self initWithSuccess:success] : [self initWithError:error];
}

KIVO_VALUE(@"success", @"error")

- (NSString*)description {
    return [NSString stringWithFormat:@"<ObjCResult: %@>", _success ? static_cast<id>(_success) : _error];
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
