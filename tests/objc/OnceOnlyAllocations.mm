// What the Objective-C runtime and Foundation keep for ever of a class they have set up is no leak, though nothing in
// reach points to it.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#define KIVO_SEEN_BY_THE_SANITIZER extern "C" __attribute__((visibility("default")))

KIVO_SEEN_BY_THE_SANITIZER const char* __lsan_default_suppressions(void);
KIVO_SEEN_BY_THE_SANITIZER void __lsan_disable(void) __attribute__((weak));
KIVO_SEEN_BY_THE_SANITIZER void __lsan_enable(void) __attribute__((weak));

const char* __lsan_default_suppressions(void) {
    return "leak:objc_malloc\nleak:class_copyMethodList\n";
}

namespace {

/// Has Foundation set up what the tests use of it where the leak checker does not look.
class FoundationSetUp final : public ::testing::Environment {
public:
    void SetUp() override {
        if (!__lsan_disable) {
            return;
        }
        __lsan_disable();
        @autoreleasepool {
            [NSMutableArray array];
            [[NSException exceptionWithName:@"None" reason:nil userInfo:nil] description];
            [NSKeyedArchiver archivedDataWithRootObject:@"nothing"];
        }
        __lsan_enable();
    }
};

const auto* const environment = ::testing::AddGlobalTestEnvironment(new FoundationSetUp);

} // namespace
