#pragma once

#import "Guard.h"

#import <Foundation/Foundation.h>

#include <memory>

namespace kivo::objc {

/// A copy of a host's block, released with the last copy of this object. An exception of the block is reported and goes
/// no further.
template <class Block>
class HostBlock {
public:
    explicit HostBlock(Block block)
        : copy_{std::make_shared<const Copy>(block)} {}

    template <class... Arguments>
    void operator()(const Arguments&... arguments) const {
        @autoreleasepool {
            // The inner handler reads the text of an Objective-C exception; the outer handler stops all others.
            guarded([&] {
                @try {
                    copy_->block(arguments...);
                } @catch (NSException* exception) {
                    reportException([[exception description] UTF8String]);
                }
            });
        }
    }

    Block block() const { return copy_->block; }

private:
    struct Copy {
        explicit Copy(Block original)
            : block{Block_copy(original)} {}

        Copy(const Copy&) = delete;
        Copy& operator=(const Copy&) = delete;

        ~Copy() {
            @autoreleasepool {
                Block_release(block);
            }
        }

        Block block;
    };

    std::shared_ptr<const Copy> copy_;
};

} // namespace kivo::objc
