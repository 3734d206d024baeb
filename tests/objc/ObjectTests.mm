#import "Host.h"

#include <kivo/kivo.hpp>
#import <kivo/objc/KivoNative.h>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

std::string text(NSString* value) {
    return [value UTF8String];
}

/// Whether the call raises the exception for arguments that a class does not take.
bool isRefused(const std::function<void()>& call) {
    @try {
        call();
    } @catch (NSException* exception) {
        return [[exception name] isEqual:NSInvalidArgumentException];
    }
    return false;
}

/// The classes of the library's binary.
std::vector<Class> classesOfTheLibrary() {
    std::vector<Class> classes(static_cast<std::size_t>(objc_getClassList(nullptr, 0)));
    classes.resize(static_cast<std::size_t>(objc_getClassList(classes.data(), static_cast<int>(classes.size()))));
    std::erase_if(classes, [](Class each) {
        Dl_info binary{};
        return dladdr(static_cast<const void*>(each), &binary) == 0 ||
               !std::string_view{binary.dli_fname}.contains("libkivo-objc");
    });
    return classes;
}

class ObjCObjects : public testing::Test {
protected:
    ~ObjCObjects() override { [pool drain]; }

    NSAutoreleasePool* pool = [NSAutoreleasePool new];
};

TEST_F(ObjCObjects, CannotBeMadeWithoutValues) {
    for (Class each in @[
             [::IdvResult class], [::ObjCResult class], [::ObjCError class], [::AcquisitionConfig class],
             [::KivoAPIProvider class], [KivoColor class], [KivoFont class], [FinalStatusVC class],
             [KivoTextStyled class]
         ]) {
        EXPECT_TRUE(isRefused([each] { (void)[[each alloc] performSelector:@selector(init)]; }))
            << text(NSStringFromClass(each));
    }
}

TEST_F(ObjCObjects, NumbersNamesAndSettingsAreTheLibrarys) {
    ::ObjCError* const error = [[[::ObjCError alloc] initWithErrorName:@"" message:@"" code:0
                                                        genericMessage:@""] autorelease];
    error.code = NSIntegerMin + 1120;
    EXPECT_EQ(error.code, NSIntegerMin + 1120);
    EXPECT_EQ(text([SDKEnvHelper environmentNameFrom:SDKEnvPREPROD]), "PREPROD");
    EXPECT_EQ(text([SDKEnvHelper environmentNameFrom:static_cast<SDKEnv>(NSInteger{1} << 32)]), "");
    EXPECT_EQ(text([IdvEventsHelper eventNameFrom:IdvEventsOCR_SCAN]), "OCR_SCAN");
    EXPECT_EQ(text([AcquisitionObjectHelper acquisitionObjectNameFrom:AcquisitionObjectOcrScan]), "OCR_SCAN");
    EXPECT_EQ(text([SdkVersions getPreciseVersionFromVersion:@"170"]), "17");

    EXPECT_EQ(KivoSDK.logLevel, LogLevelInfo);
    EXPECT_EQ(text(KivoSDK.VERSION), "183");
    KivoSDK.logLevel = LogLevelError;
    KivoSDK.VERSION = @"184";
    KivoSDK.shouldApplyRetryLimit = YES;
    EXPECT_EQ(kivo::KivoSDK::logLevel(), kivo::LogLevel::error);
    EXPECT_EQ(kivo::KivoSDK::VERSION(), "184");
    EXPECT_TRUE(kivo::KivoSDK::shouldApplyRetryLimit() && KivoSDK.shouldApplyRetryLimit);

    ZorFrameworkWrapper* const wrapper = [[ZorFrameworkWrapper new] autorelease];
    wrapper.config = [Host config];
    EXPECT_EQ(text(wrapper.config.KIVO_DOC_ISSUERS), "UTO");
    KivoAPIProvider* const provider = [wrapper load:@"K" version:@"14x"];
    EXPECT_NE(provider, nil);
    EXPECT_EQ(wrapper.apiProvider, provider);
    EXPECT_EQ([wrapper load:@"K" version:@"99"], nil);
    EXPECT_EQ(wrapper.apiProvider, nil);
    EXPECT_EQ(text(KivoSDK.requestedSDKVersion), "99");

    KivoDeployment* const deployment = [[KivoDeployment new] autorelease];
    deployment.joinPages = @[ @"https://a.example", @"https://b.example" ];
    [deployment install];
    EXPECT_EQ(kivo::Deployment::current().joinPage(kivo::SDKEnv::PREPROD), "https://b.example");
    EXPECT_EQ(kivo::Deployment::current().joinPage(kivo::SDKEnv::DEV), "");
    EXPECT_TRUE([[KivoDeployment current].joinPages isEqual:deployment.joinPages]);

    EXPECT_EQ([KivoFont fontWithName:@"No such font" size:12], nil);
    EXPECT_EQ([KivoColor colorNamed:@"No.such.colour"], nil);
    EXPECT_EQ([KivoImage imageNamed:@"no-such-image"], nil);
    EXPECT_EQ([KivoBundle bundleWithIdentifier:@"no.such.bundle"], nil);
    EXPECT_EQ([::ActivationResponse responseWithText:@"[]"], nil);
    ::ActivationResponse* const session =
        [::ActivationResponse responseWithText:@"{\"app-config\":{\"app-doclist\":\"true\"}}"];
    EXPECT_TRUE([::ActivationResponse isDocumentListAvailableWithSessionObj:session]);
    EXPECT_FALSE([::ActivationResponse isDocumentListAvailableWithSessionObj:nil]);
}

TEST_F(ObjCObjects, AnArchiveHoldsEveryFieldWithItsType) {
    ::AcquisitionConfig* const config = [Host config];
    ::AcquisitionConfig* const copy =
        [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:config]];
    EXPECT_NE(copy, config);
    EXPECT_TRUE([[copy getAsDictionary] isEqual:[config getAsDictionary]]);
    NSDictionary* const whole = @{
        AcquisitionConfigKeys.ENVIRONMENT : @"TEST",
        AcquisitionConfigKeys.KIVO_APP_DOCLIST : @"PASSPORT",
        AcquisitionConfigKeys.KIVO_EXPIRE_GRACE : @"P6M",
        AcquisitionConfigKeys.KIVO_FACEMATCH_MIN : @"0.8",
        AcquisitionConfigKeys.KIVO_DOC_ISSUERS : @"UTO",
        AcquisitionConfigKeys.KIVO_IMAGES : @"face",
    };
    EXPECT_TRUE([[config getAsDictionary] isEqual:whole]);
    config.ENVIRONMENT = static_cast<SDKEnv>(4);
    EXPECT_EQ([[config getAsDictionary] count], 0U);

    NSMutableDictionary* const fields = [NSMutableDictionary dictionaryWithObject:@3 forKey:@"ENVIRONMENT"];
    for (NSString* key in
         @[ @"KIVO_APP_DOCLIST", @"KIVO_EXPIRE_GRACE", @"KIVO_FACEMATCH_MIN", @"KIVO_DOC_ISSUERS", @"KIVO_IMAGES" ]) {
        [fields setObject:@"" forKey:key];
    }
    const auto readWith = [&](NSString* key, id replacement) {
        NSMutableData* const data = [NSMutableData data];
        NSKeyedArchiver* const archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
        for (NSString* each in fields) {
            const id value = [each isEqual:key] ? replacement : [fields objectForKey:each];
            if ([value isKindOfClass:[NSNumber class]]) {
                [archiver encodeInteger:[value integerValue] forKey:each];
            } else if (value) {
                [archiver encodeObject:value forKey:each];
            }
        }
        [archiver finishEncoding];
        NSKeyedUnarchiver* const reader = [[[NSKeyedUnarchiver alloc] initForReadingWithData:data] autorelease];
        return [[[::AcquisitionConfig alloc] initWithCoder:reader] autorelease];
    };
    EXPECT_EQ(readWith(nil, nil).ENVIRONMENT, SDKEnvDEV);
    EXPECT_EQ(readWith(@"ENVIRONMENT", @4), nil);
    for (NSString* key in fields) {
        EXPECT_EQ(readWith(key, nil), nil) << "without " << text(key);
        EXPECT_EQ(readWith(key, @[ @"text" ]), nil) << "another type for " << text(key);
    }
}

TEST_F(ObjCObjects, ValuesAreArchivedAndNoOtherObjectIs) {
    std::size_t others = 0;
    for (Class each : classesOfTheLibrary()) {
        if (![each conformsToProtocol:@protocol(NSSecureCoding)]) {
            const id empty = NSAllocateObject(each, 0, nullptr);
            EXPECT_TRUE(isRefused([empty] { [empty encodeWithCoder:nil]; })) << text(NSStringFromClass(each));
            NSDeallocateObject(empty);
            ++others;
        }
    }
    EXPECT_GT(others, 20U);
    KivoView* const view = [[KivoView new] autorelease];
    EXPECT_TRUE(isRefused([view] { [NSKeyedArchiver archivedDataWithRootObject:view]; }));

    ::IdvResult* const result = [[[::IdvResult alloc] initWithData:@"T1"
                                                      responseType:IdvEventsJOIN_SESSION] autorelease];
    const auto errorOf = [](NSInteger code) {
        return [[[::ObjCError alloc] initWithErrorName:@"NO_CHIP"
                                               message:@"No chip"
                                                  code:code
                                        genericMessage:@"Document scan error"] autorelease];
    };
    const std::vector<std::pair<id, std::string>> values = {
        {[Host config],
         "<AcquisitionConfig: TEST, documents \"PASSPORT\", grace \"P6M\", face match \"0.8\", issuers "
         "\"UTO\", images \"face\">"},
        {result, "<IdvResult: JOIN_SESSION>"},
        {errorOf(2001), "<ObjCError: NO_CHIP, 2001, No chip>"},
        {errorOf(NSIntegerMin), "<ObjCError: NO_CHIP, -9223372036854775808, No chip>"},
        {[[[::ObjCResult alloc] initWithSuccess:result] autorelease], "<ObjCResult: <IdvResult: JOIN_SESSION>>"},
        {[[[::ObjCResult alloc] initWithError:errorOf(2001)] autorelease],
         "<ObjCResult: <ObjCError: NO_CHIP, 2001, No chip>>"},
        {[KivoColor colorWithRed:0.1 green:0.2 blue:0.3 alpha:1], "red 0.1, green 0.2, blue 0.3, alpha 1"},
        {[KivoColor colorWithLight:[KivoColor colorWithRed:0.1 green:0.2 blue:0.3 alpha:1]
                              dark:[KivoColor colorWithRed:0.5 green:0.6 blue:0.7 alpha:0.8]],
         "red 0.1, green 0.2, blue 0.3, alpha 1; in the dark red 0.5, green 0.6, blue 0.7, alpha 0.8"},
        {[KivoFont systemFontOfSize:12.5], "system font at 12.5 points"},
    };
    for (const auto& [value, description] : values) {
        const id copy = [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:value]];
        EXPECT_NE(copy, value);
        EXPECT_EQ([copy hash], [value hash]) << description;
        EXPECT_EQ(text([copy description]), description);
        for (const auto& [other, otherDescription] : values) {
            EXPECT_EQ([copy isEqual:other] != NO, other == value) << description << " and " << otherDescription;
        }
    }
    NSError* const error = [errorOf(2001) asNSError];
    EXPECT_TRUE([error.domain isEqual:KivoErrorDomain] && [error.localizedDescription isEqual:@"No chip"]);
    EXPECT_EQ(error.code, 2001);
}

TEST_F(ObjCObjects, OneObjectOfTheLibraryIsOneObject) {
    const auto theme = std::make_shared<kivo::ThemeCustomization>();
    const void* first = nullptr;
    @autoreleasepool {
        first = [ThemeCustomization themeWithNative:theme];
        EXPECT_EQ([ThemeCustomization themeWithNative:theme], first);
    }
    EXPECT_EQ(theme.use_count(), 1);

    // Wrappers come and go on two threads; no one may be handed one that is going.
    const auto wrapOften = [&theme] {
        for (int i = 0; i < 20000; ++i) {
            @autoreleasepool {
                ThemeCustomization* const wrapper = [ThemeCustomization themeWithNative:theme];
                ASSERT_EQ([wrapper nativeTheme].get(), theme.get());
            }
        }
    };
    std::thread other{wrapOften};
    wrapOften();
    other.join();
    EXPECT_EQ(theme.use_count(), 1);
}

TEST_F(ObjCObjects, BlocksAreObjects) {
    Host* captured = [Host new];
    __block int calls = 0;
    void (^block)(void) = ^{
        calls += [captured isKindOfClass:[Host class]];
    };
    NSMutableArray* const blocks = [NSMutableArray arrayWithObject:[[block copy] autorelease]];
    void (^const copied)(void) = [blocks lastObject];
    EXPECT_NE(static_cast<const void*>(copied), static_cast<const void*>(block));
    [captured release];
    EXPECT_EQ([Host alive], 1);
    copied();
    void (^const nesting)(void) = [^{
        copied();
    } copy];
    [blocks removeAllObjects];
    [pool drain];
    pool = [NSAutoreleasePool new];
    nesting();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ([Host alive], 1);

    constexpr std::size_t many = 70'000; // more than a block's flags can count
    std::vector<void (^)(void)> holders;
    for (std::size_t i = 0; i < many; ++i) {
        Block_copy(nesting);
        holders.push_back(Block_copy(^{
            ++calls;
        }));
    }
    for (std::size_t i = 0; i < many; ++i) {
        Block_release(nesting);
        if (i + 1 < many) {
            Block_release(holders[i]);
        }
    }
    nesting();
    holders.back()();
    EXPECT_EQ(calls, 4);
    Block_release(holders.back());
    EXPECT_EQ([Host alive], 1);
    [nesting release];
    EXPECT_EQ([Host alive], 0);
    void (^const global)(void) = ^{
    };
    EXPECT_EQ([[global copy] autorelease], global);
}

TEST_F(ObjCObjects, AHostsLoopRunsTheMainQueue) {
    NSRunLoop* const runLoop = [NSRunLoop currentRunLoop];
    NSAutoreleasePool* const pool = [NSAutoreleasePool new];
    [KivoMainQueue attachToRunLoop:runLoop];
    [KivoMainQueue attachToRunLoop:runLoop];
    [pool drain];
    EXPECT_TRUE(isRefused([] { [KivoMainQueue attachToRunLoop:[[NSDictionary dictionary] objectForKey:@"none"]]; }));
    std::thread{[runLoop] {
        @autoreleasepool {
            EXPECT_TRUE(isRefused([runLoop] { [KivoMainQueue attachToRunLoop:runLoop]; }));
            EXPECT_TRUE(isRefused([] { [KivoMainQueue attachToRunLoop:[NSRunLoop currentRunLoop]]; }));
            EXPECT_TRUE(isRefused([] { [KivoMainQueue detach]; }));
        }
    }}.join();
    int ran = 0;
    std::thread{[&ran] { kivo::platform::RunLoop::main()->async([&ran] { ++ran; }); }}.join();
    kivo::platform::RunLoop::main()->asyncAfter(std::chrono::milliseconds{1}, [&ran] { ++ran; });
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while (ran < 2 && [limit timeIntervalSinceNow] > 0) {
        [runLoop runMode:NSDefaultRunLoopMode beforeDate:limit];
    }
    EXPECT_EQ(ran, 2);
    for (NSString* mode in @[ NSDefaultRunLoopMode, @"NSModalPanelRunLoopMode", @"NSEventTrackingRunLoopMode" ]) {
        ran = 0;
        kivo::platform::RunLoop::main()->async([&ran] { ++ran; });
        EXPECT_TRUE([runLoop runMode:mode beforeDate:limit] && ran == 1) << text(mode);
    }
    [KivoMainQueue detach];
    [KivoMainQueue detach];
    kivo::platform::RunLoop::main()->async([&ran] { ++ran; });
    [runLoop runMode:NSDefaultRunLoopMode beforeDate:[NSDate date]];
    EXPECT_EQ(ran, 1) << "waits until the queue is attached again";
    [KivoMainQueue attachToRunLoop:runLoop];
    [runLoop runMode:NSDefaultRunLoopMode beforeDate:limit];
    EXPECT_EQ(ran, 2);
    [KivoMainQueue detach];
}

} // namespace
