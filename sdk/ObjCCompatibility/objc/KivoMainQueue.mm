#import <kivo/objc/KivoMainQueue.h>
#include <kivo/platform/RunLoop.hpp>

#include <cstdint>

@interface KivoMainQueue () <RunLoopEvents>
@end

@implementation KivoMainQueue

+ (void)attachToRunLoop:(NSRunLoop*)runLoop {
    const auto descriptor = static_cast<std::intptr_t>(kivo::platform::RunLoop::main()->fileDescriptor());
    // Never released, because the run loop does not retain its watchers.
    static KivoMainQueue* const watcher = [KivoMainQueue new];
    [runLoop addEvent:reinterpret_cast<void*>(descriptor) type:ET_RDESC watcher:watcher forMode:NSDefaultRunLoopMode];
}

- (void)receivedEvent:(void*)data type:(RunLoopEventType)type extra:(void*)extra forMode:(NSString*)mode {
    kivo::platform::RunLoop::main()->drain();
}

@end
