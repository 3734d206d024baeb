#import "Completion.h"

#import "Guard.h"
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

/// A host's block, copied, and released with this object.
class CopiedBlock {
public:
    explicit CopiedBlock(KivoCompletion block)
        : block_{Block_copy(block)} {}

    CopiedBlock(const CopiedBlock&) = delete;
    CopiedBlock& operator=(const CopiedBlock&) = delete;

    ~CopiedBlock() {
        @autoreleasepool {
            Block_release(block_);
        }
    }

    void operator()(const kivo::ObjCResult& result) const {
        @try {
            block_(converted(result));
        } @catch (NSException* exception) {
            reportException([[exception description] UTF8String]);
        }
    }

private:
    KivoCompletion block_;
};

} // namespace

ObjCCompletion completion(KivoCompletion response) {
    if (!response) {
        return {};
    }
    return [block = std::make_shared<CopiedBlock>(response)](const std::shared_ptr<kivo::ObjCResult>& result) {
        @autoreleasepool {
            guarded([&] { (*block)(*result); });
        }
    };
}

} // namespace kivo::objc
