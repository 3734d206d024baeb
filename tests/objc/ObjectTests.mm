#import "Host.h"

#include <kivo/kivo.hpp>
#import <kivo/objc/KivoNative.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string text(NSString* value) {
    return [value UTF8String];
}

class ObjCObjects : public testing::Test {
protected:
    ~ObjCObjects() override { [pool drain]; }

    NSAutoreleasePool* pool = [NSAutoreleasePool new];
};

TEST_F(ObjCObjects, CannotBeMadeWithoutValues) {
    for (Class each in @[
             [::IdvResult class], [::ObjCResult class], [::ObjCError class], [::AcquisitionConfig class],
             [::KivoAPIProvider class]
         ]) {
        BOOL hasRaised = NO;
        @try {
            (void)[[each alloc] performSelector:@selector(init)];
        } @catch (NSException* exception) {
            hasRaised = [[exception name] isEqual:NSInvalidArgumentException];
        }
        EXPECT_TRUE(hasRaised) << text(NSStringFromClass(each));
    }
}

TEST_F(ObjCObjects, NamesAndSettingsAreTheLibrarys) {
    EXPECT_EQ(text([SDKEnvHelper environmentNameFrom:SDKEnvPREPROD]), "PREPROD");
    EXPECT_EQ(text([SDKEnvHelper environmentNameFrom:static_cast<SDKEnv>(4)]), "");
    EXPECT_EQ(text([SDKEnvHelper environmentNameFrom:static_cast<SDKEnv>(NSInteger{1} << 32)]), "");
    EXPECT_EQ(text([IdvEventsHelper eventNameFrom:IdvEventsOCR_SCAN]), "OCR_SCAN");
    EXPECT_EQ(text([AcquisitionObjectHelper acquisitionObjectNameFrom:AcquisitionObjectOcrScan]), "OCR_SCAN");
    EXPECT_EQ(text([SdkVersions getPreciseVersionFromVersion:@"170"]), "17");

    EXPECT_EQ(KivoSDK.logLevel, LogLevelInfo);
    EXPECT_EQ(text(KivoSDK.VERSION), "183");
    EXPECT_FALSE(KivoSDK.shouldApplyRetryLimit);
    KivoSDK.logLevel = LogLevelError;
    KivoSDK.VERSION = @"184";
    KivoSDK.shouldApplyRetryLimit = YES;
    EXPECT_EQ(kivo::KivoSDK::logLevel(), kivo::LogLevel::error);
    EXPECT_EQ(kivo::KivoSDK::VERSION(), "184");
    EXPECT_TRUE(kivo::KivoSDK::shouldApplyRetryLimit());

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
    deployment.faceTecProduction = YES;
    [deployment install];
    EXPECT_EQ(kivo::Deployment::current().joinPage(kivo::SDKEnv::PREPROD), "https://b.example");
    EXPECT_EQ(kivo::Deployment::current().joinPage(kivo::SDKEnv::DEV), "");
    EXPECT_TRUE(kivo::Deployment::current().faceTecProduction);
    EXPECT_TRUE([[KivoDeployment current].joinPages isEqual:deployment.joinPages]);
}

TEST_F(ObjCObjects, AConfigurationSurvivesItsArchive) {
    ::AcquisitionConfig* const config = [Host config];
    ::AcquisitionConfig* const read =
        [NSKeyedUnarchiver unarchiveObjectWithData:[NSKeyedArchiver archivedDataWithRootObject:config]];
    EXPECT_NE(read, config);
    EXPECT_TRUE([[read getAsDictionary] isEqual:[config getAsDictionary]]);
    EXPECT_TRUE([[config getAsDictionary] isEqual:(@{
                                              AcquisitionConfigKeys.ENVIRONMENT : @"TEST",
                                              AcquisitionConfigKeys.KIVO_APP_DOCLIST : @"PASSPORT",
                                              AcquisitionConfigKeys.KIVO_EXPIRE_GRACE : @"P6M",
                                              AcquisitionConfigKeys.KIVO_FACEMATCH_MIN : @"0.8",
                                              AcquisitionConfigKeys.KIVO_DOC_ISSUERS : @"UTO",
                                              AcquisitionConfigKeys.KIVO_IMAGES : @"face",
                                          })]);
    config.ENVIRONMENT = static_cast<SDKEnv>(4);
    EXPECT_EQ([[config getAsDictionary] count], 0U);
}

TEST_F(ObjCObjects, AnErrorHoldsACodeOfAnySize) {
    const NSInteger large = NSIntegerMin + 1120;
    ::ObjCError* const error = [[[::ObjCError alloc] initWithErrorName:@"NAME"
                                                               message:@"m"
                                                                  code:large
                                                        genericMessage:@"g"] autorelease];
    EXPECT_EQ(error.code, large);
    error.code = NSIntegerMax;
    EXPECT_EQ(error.code, NSIntegerMax);
}

TEST_F(ObjCObjects, ASessionTellsWhetherItListsDocuments) {
    const struct {
        NSString* answer;
        BOOL lists;
    } cases[] = {
        {@"{\"app-config\":{\"app-doclist\":\"true\"}}", YES},
        {@"{\"app-config\":{\"app-doclist\":\"TRUE\"}}", NO},
        {@"{\"app-config\":{\"app-doclist\":true}}", NO},
        {@"{}", NO},
        {@"[]", NO},
    };

    for (const auto& each : cases) {
        ::ActivationResponse* const session = [::ActivationResponse responseWithText:each.answer];
        EXPECT_EQ([::ActivationResponse isDocumentListAvailableWithSessionObj:session], each.lists)
            << text(each.answer);
    }
    EXPECT_EQ([::ActivationResponse responseWithText:@"[]"], nil);
}

TEST_F(ObjCObjects, AnArchiveMustHoldEveryFieldWithItsType) {
    NSDictionary* const whole = @{
        @"ENVIRONMENT" : @3,
        @"KIVO_APP_DOCLIST" : @"a",
        @"KIVO_EXPIRE_GRACE" : @"b",
        @"KIVO_FACEMATCH_MIN" : @"c",
        @"KIVO_DOC_ISSUERS" : @"d",
        @"KIVO_IMAGES" : @"",
    };
    const auto read = [](NSDictionary* fields) {
        NSMutableData* const data = [NSMutableData data];
        NSKeyedArchiver* const archiver = [[[NSKeyedArchiver alloc] initForWritingWithMutableData:data] autorelease];
        for (NSString* key in fields) {
            const id value = [fields objectForKey:key];
            if ([value isKindOfClass:[NSNumber class]]) {
                [archiver encodeInteger:[value integerValue] forKey:key];
            } else {
                [archiver encodeObject:value forKey:key];
            }
        }
        [archiver finishEncoding];
        NSKeyedUnarchiver* const reader = [[[NSKeyedUnarchiver alloc] initForReadingWithData:data] autorelease];
        return [[[::AcquisitionConfig alloc] initWithCoder:reader] autorelease];
    };
    EXPECT_EQ(read(whole).ENVIRONMENT, SDKEnvDEV);
    for (NSString* key in whole) {
        NSMutableDictionary* const fields = [[whole mutableCopy] autorelease];
        [fields removeObjectForKey:key];
        EXPECT_EQ(read(fields), nil) << "without " << text(key);
        [fields setObject:[key isEqual:@"ENVIRONMENT"] ? @[ @"text" ] : @[] forKey:key];
        EXPECT_EQ(read(fields), nil) << "another type for " << text(key);
    }
    NSMutableDictionary* const outside = [[whole mutableCopy] autorelease];
    [outside setObject:@4 forKey:@"ENVIRONMENT"];
    EXPECT_EQ(read(outside), nil);
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
    Captured* captured = [Captured new];
    __block int calls = 0;
    void (^block)(void) = ^{
        calls += [captured isKindOfClass:[Captured class]];
    };
    NSMutableArray* const blocks = [NSMutableArray arrayWithObject:[[block copy] autorelease]];
    void (^const copied)(void) = [blocks lastObject];
    EXPECT_NE(static_cast<const void*>(copied), static_cast<const void*>(block));
    [captured release];
    EXPECT_EQ([Captured alive], 1);
    copied();
    void (^const nesting)(void) = [^{
        copied();
    } copy];
    [blocks removeAllObjects];
    [pool drain];
    pool = [NSAutoreleasePool new];
    nesting();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ([Captured alive], 1);
    [nesting release];
    EXPECT_EQ([Captured alive], 0);
    void (^const global)(void) = ^{
    };
    EXPECT_EQ([[global copy] autorelease], global);
}

TEST_F(ObjCObjects, AHostsLoopRunsTheMainQueue) {
    NSRunLoop* const runLoop = [NSRunLoop currentRunLoop];
    NSAutoreleasePool* const pool = [NSAutoreleasePool new];
    [KivoMainQueue attachToRunLoop:runLoop];
    [pool drain];
    int ran = 0;
    std::thread{[&ran] { kivo::platform::RunLoop::main()->async([&ran] { ++ran; }); }}.join();
    kivo::platform::RunLoop::main()->asyncAfter(std::chrono::milliseconds{1}, [&ran] { ++ran; });
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while (ran < 2 && [limit timeIntervalSinceNow] > 0) {
        [runLoop runMode:NSDefaultRunLoopMode beforeDate:limit];
    }
    EXPECT_EQ(ran, 2);
}

} // namespace
