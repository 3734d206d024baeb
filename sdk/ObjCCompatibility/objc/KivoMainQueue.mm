#import "Value.h"

#import <kivo/objc/KivoMainQueue.h>
#include <kivo/platform/RunLoop.hpp>

#include <cstdint>

@interface KivoMainQueue () <RunLoopEvents>
@end

namespace {

/// What the main queue is attached to; belongs to the main thread.
struct Attachment {
    NSRunLoop* loop = nil;
    std::intptr_t descriptor = -1;

    void* data() const { return reinterpret_cast<void*>(descriptor); }
};

Attachment attachedTo;

/// GNUstep's run loop takes `NSRunLoopCommonModes` as a mode of its own, which no host runs, so each mode is named
/// here. The last two are AppKit's, by the values of AppKit's constants.
NSArray* commonModes() {
    return @[ NSDefaultRunLoopMode, @"NSModalPanelRunLoopMode", @"NSEventTrackingRunLoopMode" ];
}

void requireMainThread() {
    if (![NSThread isMainThread]) {
        kivo::objc::refuse([KivoMainQueue class], @"is used on the main thread only");
    }
}

} // namespace

@implementation KivoMainQueue

KIVO_NO_ARCHIVE

+ (void)attachToRunLoop:(NSRunLoop*)runLoop {
    requireMainThread();
    if (runLoop != [NSRunLoop currentRunLoop]) {
        kivo::objc::refuse(self, @"attaches to the run loop of the main thread only");
    }
    [self detach];
    // Never released, because the run loop does not retain its watchers.
    static KivoMainQueue* const watcher = [KivoMainQueue new];
    attachedTo = {runLoop, kivo::platform::RunLoop::main()->fileDescriptor()};
    for (NSString* mode in commonModes()) {
        [runLoop addEvent:attachedTo.data() type:ET_RDESC watcher:watcher forMode:mode];
    }
}

+ (void)detach {
    requireMainThread();
    for (NSString* mode in commonModes()) {
        [attachedTo.loop removeEvent:attachedTo.data() type:ET_RDESC forMode:mode all:YES];
    }
    attachedTo = {};
}

- (void)receivedEvent:(void*)data type:(RunLoopEventType)type extra:(void*)extra forMode:(NSString*)mode {
    kivo::platform::RunLoop::main()->drain();
}

@end
