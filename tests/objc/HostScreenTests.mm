#import "Host.h"
#include "support/TemporaryFolder.hpp"

#include <kivo/kivo.hpp>
#import <kivo/objc/KivoNative.h>
#include <kivo/platform/Clock.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <gtest/gtest.h>

#include <chrono>
#include <string>

/// Counts how often the closing screen has said goodbye. Owns the screen, if it is told to.
@interface Farewells : NSObject <FinalStatusVCDelegate> {
@public
    int count;
    BOOL isRude;
    int* deaths;
    FinalStatusVC* screen;
}
@end

@implementation Farewells

- (void)finalStatusDidDisappear {
    ++count;
    if (isRude) {
        [NSException raise:NSGenericException format:@"no farewell"];
    }
}

- (void)dealloc {
    if (deaths) {
        ++*deaths;
    }
    [screen release];
    [super dealloc];
}

@end

namespace {

using namespace std::chrono_literals;
namespace platform = kivo::platform;

/// A host's own screens, on a display, with a clock that the test moves.
class ObjCHostScreens : public testing::Test {
protected:
    ObjCHostScreens() {
        auto services = platform::linuxServices(
            {.mainBundle = folder.path() / "Host.bundle", .dataFolder = folder.path(), .trustedCertificates = {}});
        services.mainQueue = loop;
        platform::install(services);
        window->setRootViewController([start nativeViewController]);
        settle();
    }

    ~ObjCHostScreens() override {
        window->setRootViewController(nullptr);
        [start release];
        [pool drain];
        settle();
    }

    void settle(std::chrono::milliseconds time = 0ms) {
        clock->advance(time);
        loop->drain();
        window->layoutIfNeeded();
    }

    kivo::test::TemporaryFolder folder;
    std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> loop = std::make_shared<platform::RunLoop>(clock);
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    KivoViewController* start = [KivoViewController new];
};

TEST_F(ObjCHostScreens, AOneTimeCodeReachesTheHostsBlocks) {
    LuOTPView* const view = [[LuOTPView new] autorelease];
    NSMutableArray* const codes = [NSMutableArray array];
    NSMutableArray* const focus = [NSMutableArray array];
    view.otpTextFieldEntrySecureType = YES;
    view.otpEnteredString = ^(NSString* code) {
        [codes addObject:code];
    };
    view.isEditing = ^(BOOL isEditing) {
        [focus addObject:[NSNumber numberWithBool:isEditing]];
    };
    view.frame = NSMakeRect(0, 80, 300, 60);
    [start.view addSubview:view];
    settle();
    EXPECT_EQ([start.view.subviews lastObject], view);
    [[view fieldWithTag:1] nativeView]->becomeFirstResponder();
    for (const auto* digit : {"1", "2", "3", "4"}) {
        static_cast<platform::TextField&>(*platform::Keyboard::firstResponder()).insertText(digit);
    }
    EXPECT_TRUE([codes isEqual:@[ @"1234" ]]);
    EXPECT_TRUE(view.hasEnteredAllOTP);
    EXPECT_TRUE([view.secureEntryData isEqual:(@[ @"1", @"2", @"3", @"4" ])]);
    EXPECT_EQ([focus count], 8U);
    view.otpEnteredString(@"5678");
    EXPECT_EQ([codes count], 2U);
    view.otpEnteredString = nil;
    EXPECT_EQ(view.otpEnteredString, nil);
    EXPECT_EQ([view fieldWithTag:5], nil);
    EXPECT_EQ(view.aciveTextField, [view fieldWithTag:4]);
}

TEST_F(ObjCHostScreens, TheClosingScreenTellsItsDelegateThatItHasGone) {
    folder.write("Host.bundle/Bank.storyboard", R"({"scenes": {"End": {"class": "FinalStatusVC", "view": {"subviews": [
        {"type": "Label", "outlet": "completeTitleLabel"}, {"type": "Label", "outlet": "closeAppInfoLabel"},
        {"type": "Button", "outlet": "backToHomeButton", "placement": {"width": 200, "height": 50},
         "actions": {"touchUpInside": "newDocSigningTap"}}]}}}})");
    Farewells* const farewells = [[Farewells new] autorelease];
    const auto closingScreen = [] {
        return static_cast<FinalStatusVC*>([KivoViewController viewControllerWithIdentifier:@"End"
                                                                               inStoryboard:@"Bank"
                                                                                   ofBundle:[KivoBundle mainBundle]]);
    };
    @autoreleasepool {
        FinalStatusVC* const screen = closingScreen();
        ASSERT_TRUE([screen isKindOfClass:[FinalStatusVC class]]);
        screen.delegate = farewells;
        screen.themeObj = [[ThemeCustomization new] autorelease];
        screen.sessionObject = [::ActivationResponse responseWithText:@"{\"tid\":\"T1\"}"];
        EXPECT_TRUE([screen.sessionObject.tId isEqual:@"T1"]);
        EXPECT_EQ(screen.delegate, farewells);
        [start presentViewController:screen];
    }
    settle();
    @autoreleasepool {
        [start dismiss];
        settle();
    }
    EXPECT_EQ(farewells->count, 0);
    settle(100ms);
    EXPECT_EQ(farewells->count, 1);
    settle(1s);
    EXPECT_EQ([farewells retainCount], 1U) << "nothing holds the delegate any more";
    int deaths = 0;
    @autoreleasepool {
        Farewells* const owner = [Farewells new];
        owner->deaths = &deaths;
        owner->isRude = YES;
        owner->screen = [closingScreen() retain];
        owner->screen.delegate = owner;
        [start presentViewController:owner->screen];
        settle();
        [start dismiss];
        settle(100ms);
        EXPECT_EQ(owner->count, 1);
        [owner release];
    }
    EXPECT_EQ(deaths, 1);
    settle(1s);
    EXPECT_EQ(deaths, 1) << "not retained while it goes";
    EXPECT_EQ([KivoViewController viewControllerWithIdentifier:@"Start"
                                                  inStoryboard:@"Bank"
                                                      ofBundle:[KivoBundle mainBundle]],
              nil);
}

} // namespace
