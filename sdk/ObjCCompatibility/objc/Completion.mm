#import "Completion.h"

#import "HostBlock.h"
#import "Native.h"

#include <memory>

namespace kivo::objc {
namespace {

::ObjCResult* converted(const kivo::ObjCResult& result) {
    if (result.success()) {
        return [[[::ObjCResult alloc] initWithSuccess:wrapped<::IdvResult>(result.success())] autorelease];
    }
    return [[[::ObjCResult alloc] initWithError:wrapped<::ObjCError>(result.error())] autorelease];
}

} // namespace

ObjCCompletion completion(KivoCompletion response) {
    if (!response) {
        return {};
    }
    return [block = HostBlock{response}](const std::shared_ptr<kivo::ObjCResult>& result) {
        @autoreleasepool {
            block(converted(*result));
        }
    };
}

} // namespace kivo::objc
