#import "Host.h"
#include "support/Eventually.hpp"
#include "support/HostFixture.hpp"
#include "support/RecordedDiagnostics.hpp"

#import <kivo/objc/KivoNative.h>

#include <stdexcept>

namespace {

using Request = std::function<void(KivoCompletion)>;

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
        [pool drain];
    }

    /// The result of the request; nil unless its completion is called exactly once.
    ::ObjCResult* resultOf(const Request& request) {
        ::ObjCResult* result = nil;
        const auto answered = answerTo([&request, kept = &result](kivo::IdvCompletion done) {
            @autoreleasepool {
                request([Host completionThatCalls:^(::ObjCResult* received) {
                    *kept = [received retain];
                    done(std::unexpected{kivo::ResponseCode::NO_RESPONSE});
                }]);
            }
        });
        [result autorelease];
        return answered.times == 1 ? result : nil;
    }

    std::shared_ptr<kivo::test::RecordedDiagnostics> diagnostics = std::make_shared<kivo::test::RecordedDiagnostics>();
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    KivoAPIProvider* provider = [[KivoSDK loadForProviderWithKey:@"K" version:@"183"] retain];

    const Request join = [&](auto response) {
        [provider joinForCode:@"123456" config:[Host config] response:response];
    };
    const Request status = [&](auto response) { [provider statusWithResponse:response]; };
};

TEST_F(ObjCProvider, WalksASessionAndReleasesItsCompletions) {
    const Request update = [&](auto response) { [provider updateWithAction:@"a" message:@"m" response:response]; };
    const Request commit = [&](auto response) { [provider commitWithResponse:response]; };
    const Request upload = [&](auto response) {
        [provider uploadWithAcquisitionObject:AcquisitionObjectSelfieImage data:@"\u00e9" response:response];
    };
    const std::pair<IdvEvents, const Request&> steps[] = {{IdvEventsJOIN_SESSION, join},
                                                          {IdvEventsUPDATE_SESSION, update},
                                                          {IdvEventsUPLOAD_DOCUMENT, upload},
                                                          {IdvEventsSESSION_STATUS, status},
                                                          {IdvEventsCOMMIT_SESSION, commit}};
    for (const auto& [event, request] : steps) {
        ::ObjCResult* const result = resultOf(request);
        EXPECT_EQ(result.status, ObjCResultStatusSuccess) << event;
        EXPECT_EQ(result.error, nil);
        EXPECT_EQ(result.success.responseType, event);
        const auto answer = requestsTo(kivo::simulator::Endpoint::join).at(0).answer;
        const auto data = event == IdvEventsUPLOAD_DOCUMENT ? "" : "\"tid\":\"" + text(result.success.data) + '"';
        EXPECT_TRUE(answer.contains(data)) << data;
        EXPECT_TRUE([Host waitUntilNoneIsAlive]) << event;
    }
    EXPECT_EQ(service.violations(), std::vector<std::string>{});
    EXPECT_TRUE(requestsTo(kivo::simulator::Endpoint::upload)
                    .at(0)
                    .body.contains("\"acquisition-object\":4,\"data\":\"\u00e9\""));

    [provider resumeInBrowser];
    [provider reset];
    [provider resumeInBrowser];
    EXPECT_EQ(workspace->opened.size(), 1U);
    ::ObjCResult* const failed = resultOf(status);
    EXPECT_EQ(failed.status, ObjCResultStatusFailure);
    EXPECT_EQ(failed.success, nil);
    EXPECT_EQ(text(failed.error.errorName), "INVALID_STATUS_SESSION");
    EXPECT_EQ(failed.error.code, 1119);
    EXPECT_EQ(text(failed.error.message), "Invalid status session response");
    EXPECT_EQ(text(failed.error.genericMessage), "Processing error");
}

TEST_F(ObjCProvider, KeepsTheCompletionOfAnAcquireUntilTheNext) {
    const auto acquire = [&](KivoCompletion response) {
        [provider acquireWithAcquisitionObject:AcquisitionObjectActivationCode config:nil response:response];
    };
    @autoreleasepool {
        acquire([Host completionThatCalls:nil]);
    }
    EXPECT_EQ([Host alive], 1);
    acquire(nil);
    EXPECT_TRUE([Host waitUntilNoneIsAlive]);
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
    ::ObjCResult* const joined = resultOf(join);
    ASSERT_EQ(joined.status, ObjCResultStatusSuccess);
    ::ObjCResult* const seen = resultOf([&](auto response) { [other statusWithResponse:response]; });
    EXPECT_TRUE([seen.success.data isEqual:joined.success.data]);
}

TEST_F(ObjCProvider, KeepsTheHostsContextAlive) {
    KivoViewController* const controller = [[KivoViewController new] autorelease];
    [provider setContextWithViewController:controller];
    const auto retained = [controller retainCount];
    [provider setContextWithViewController:nil];
    EXPECT_EQ([controller retainCount], retained - 1);
    EXPECT_EQ([KivoViewController viewControllerWithNative:[controller nativeViewController]], controller);
}

TEST_F(ObjCProvider, TakesNilForEverything) {
    NSString* const none = missing();
    ::ObjCResult* const result =
        resultOf([&](auto response) { [provider joinForCode:none config:nil response:response]; });
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
    join(^(::ObjCResult*) {
        throw std::runtime_error{"thrown in C++"};
    });
    // Two joins under way may be answered in either order.
    EXPECT_TRUE(kivo::test::eventually([&] { return diagnostics->texts().size() == 2; }));
    EXPECT_EQ(resultOf(join).status, ObjCResultStatusSuccess);
    const auto reported = diagnostics->texts();
    ASSERT_EQ(reported.size(), 2U);
    EXPECT_TRUE(reported[0].contains("thrown by the host")) << reported[0];
    EXPECT_TRUE(reported[1].contains("thrown in C++")) << reported[1];
}

} // namespace
