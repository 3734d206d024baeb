#import "Host.h"
#include "support/HostFixture.hpp"
#include "support/RecordedDiagnostics.hpp"

#import <kivo/objc/KivoNative.h>

#include <stdexcept>

namespace {

std::string text(NSString* value) {
    return [value UTF8String];
}

/// A nil that the compiler does not see coming.
id missing() {
    return [[NSDictionary dictionary] objectForKey:@"nothing"];
}

class ObjCProvider : public kivo::test::HostFixture {
protected:
    ObjCProvider() {
        services.diagnostics = diagnostics;
        kivo::platform::install(services);
    }

    ~ObjCProvider() override {
        [provider release];
        [host release];
        [pool drain];
    }

    ::ObjCResult* joined() {
        return [host resultOf:^(KivoCompletion completion) {
            [provider joinForCode:@"123456" config:[Host config] response:completion];
        }];
    }

    std::shared_ptr<kivo::test::RecordedDiagnostics> diagnostics = std::make_shared<kivo::test::RecordedDiagnostics>();
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    Host* host = [Host new];
    KivoAPIProvider* provider = [[KivoSDK loadForProviderWithKey:@"K" version:@"183"] retain];
};

TEST_F(ObjCProvider, WalksASession) {
    ::ObjCResult* const join = joined();
    ASSERT_EQ(join.status, ObjCResultStatusSuccess);
    EXPECT_EQ(join.error, nil);
    EXPECT_EQ(join.success.responseType, IdvEventsJOIN_SESSION);
    const auto answer = requestsTo(kivo::simulator::Endpoint::join).at(0).answer;
    EXPECT_FALSE([join.success.data length] == 0);
    EXPECT_TRUE(answer.contains('"' + text(join.success.data) + '"')) << answer;

    const auto expect = [&](IdvEvents event, void (^call)(KivoCompletion)) {
        ::ObjCResult* const result = [host resultOf:call];
        EXPECT_EQ(result.status, ObjCResultStatusSuccess) << event;
        EXPECT_EQ(result.success.responseType, event);
    };
    expect(IdvEventsUPDATE_SESSION, ^(KivoCompletion completion) {
        [provider updateWithAction:@"a" message:@"m" response:completion];
    });
    expect(IdvEventsUPLOAD_DOCUMENT, ^(KivoCompletion completion) {
        [provider uploadWithAcquisitionObject:AcquisitionObjectSelfieImage data:@"\u00e9" response:completion];
    });
    expect(IdvEventsSESSION_STATUS, ^(KivoCompletion completion) {
        [provider statusWithResponse:completion];
    });
    expect(IdvEventsCOMMIT_SESSION, ^(KivoCompletion completion) {
        [provider commitWithResponse:completion];
    });
    EXPECT_EQ(service.violations(), std::vector<std::string>{});
    EXPECT_TRUE(requestsTo(kivo::simulator::Endpoint::upload)
                    .at(0)
                    .body.contains("\"acquisition-object\":4,\"data\":\"\u00e9\""));

    [provider resumeInBrowser];
    EXPECT_EQ(workspace->opened.size(), 1U);
    [provider reset];
    [provider resumeInBrowser];
    EXPECT_EQ(workspace->opened.size(), 1U);
}

TEST_F(ObjCProvider, SpellsOutAFailure) {
    ::ObjCResult* const result = [host resultOf:^(KivoCompletion completion) {
        [provider statusWithResponse:completion];
    }];
    ASSERT_EQ(result.status, ObjCResultStatusFailure);
    EXPECT_EQ(result.success, nil);
    EXPECT_EQ(text(result.error.errorName), "INVALID_STATUS_SESSION");
    EXPECT_EQ(result.error.code, 1119);
    EXPECT_EQ(text(result.error.message), "Invalid status session response");
    EXPECT_EQ(text(result.error.genericMessage), "Processing error");
}

TEST_F(ObjCProvider, ReleasesCompletionsAfterTheCall) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(joined(), nil);
        EXPECT_TRUE([Host waitUntilNothingIsCaptured]);
    }
    // A screen's completion is kept until the next acquire.
    [host withCompletion:^(KivoCompletion completion) {
        [provider acquireWithAcquisitionObject:AcquisitionObjectActivationCode config:nil response:completion];
    }];
    [provider acquireWithAcquisitionObject:AcquisitionObjectActivationCode config:nil response:nil];
    EXPECT_TRUE([Host waitUntilNothingIsCaptured]);
}

TEST_F(ObjCProvider, SharesSessionAndThemeWithOthersOfItsVersion) {
    KivoAPIProvider* const other = [KivoSDK loadForProviderWithKey:@"L" version:@"18x"];
    EXPECT_NE(provider, other);
    ThemeCustomization* const before = provider.sdkTheme;
    ASSERT_NE(before, nil);
    EXPECT_EQ(other.sdkTheme, before);

    @autoreleasepool {
        [provider setThemeWithTheme:[[ThemeCustomization new] autorelease]];
    }
    EXPECT_EQ(provider.sdkTheme, before);
    ThemeCustomization* const after = [KivoSDK loadForProviderWithKey:@"L" version:@"18"].sdkTheme;
    EXPECT_NE(after, before);
    EXPECT_EQ([ThemeCustomization themeWithNative:kivo::KivoSDK::load("L", "18")->sdkTheme()], after);

    provider.sdkTheme = after;
    EXPECT_EQ(kivo::KivoSDK::load("L", "18")->sdkTheme(), [after nativeTheme]);
    EXPECT_EQ(other.sdkTheme, before);
    EXPECT_EQ(joined().status, ObjCResultStatusSuccess);
    EXPECT_EQ([host resultOf:^(KivoCompletion completion) {
                  [other statusWithResponse:completion];
              }].status,
              ObjCResultStatusSuccess);
}

TEST_F(ObjCProvider, KeepsTheHostsContextAlive) {
    KivoViewController* const controller = [KivoViewController new];
    [provider setContextWithViewController:controller];
    const auto retained = [controller retainCount];
    [provider setContextWithViewController:nil];
    EXPECT_EQ([controller retainCount], retained - 1);
    EXPECT_EQ([KivoViewController viewControllerWithNative:[controller nativeViewController]], controller);
    [controller release];
}

TEST_F(ObjCProvider, TakesNilForEverything) {
    NSString* const none = missing();
    ::ObjCResult* const result = [host resultOf:^(KivoCompletion completion) {
        [provider joinForCode:none config:nil response:completion];
    }];
    EXPECT_EQ(text(result.error.errorName), "INVALID_JOIN_SESSION");
    [provider setThemeWithTheme:nil];
    EXPECT_EQ([KivoSDK loadForProviderWithKey:none version:@"18"].sdkTheme, nil);
    [provider setContextWithViewController:nil];
    [provider joinForCode:none config:nil response:nil];
    [provider updateWithAction:none message:none response:nil];
    [provider statusWithResponse:nil];
    [provider commitWithResponse:nil];
    [provider uploadWithAcquisitionObject:static_cast<AcquisitionObject>(NSIntegerMax) data:none response:nil];
    [provider acquireWithAcquisitionObject:static_cast<AcquisitionObject>(-1) config:nil response:nil];
    EXPECT_EQ([KivoSDK loadForProviderWithKey:none version:none], nil);
    EXPECT_EQ([[[::ObjCResult alloc] initWithSuccess:static_cast<::IdvResult*>(missing())] autorelease], nil);
}

TEST_F(ObjCProvider, LetsNoExceptionOutOfACompletion) {
    [provider statusWithResponse:^(::ObjCResult*) {
        [NSException raise:@"HostException" format:@"thrown by the host"];
    }];
    [provider joinForCode:@"123456"
                   config:[Host config]
                 response:^(::ObjCResult*) {
                     throw std::runtime_error{"thrown in C++"};
                 }];
    // Two joins under way may be answered in either order.
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while (diagnostics->texts().size() < 2 && [limit timeIntervalSinceNow] > 0) {
        [NSThread sleepForTimeInterval:0.001];
    }
    EXPECT_EQ(joined().status, ObjCResultStatusSuccess);
    const auto reported = diagnostics->texts();
    ASSERT_EQ(reported.size(), 2U);
    EXPECT_TRUE(reported[0].contains("thrown by the host")) << reported[0];
    EXPECT_TRUE(reported[1].contains("thrown in C++")) << reported[1];
}

} // namespace
