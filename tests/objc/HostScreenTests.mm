#import "Host.h"
#include "support/HostFixture.hpp"

#import <kivo/objc/KivoNative.h>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>

/// Counts how often the closing screen has said goodbye. Owns the screen, if it is told to.
@interface Farewells : NSObject <FinalStatusVCDelegate> {
@public
    int count;
    int* deaths;
    FinalStatusVC* screen;
}
@end

@implementation Farewells

- (void)finalStatusDidDisappear {
    ++count;
    if (deaths) {
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
class ObjCHostScreens : public kivo::test::OfflineHost {
protected:
    ObjCHostScreens() {
        installServices(bundle());
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
        mainLoop->drain();
        window->layoutIfNeeded();
    }

    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    KivoViewController* start = [KivoViewController new];
};

TEST_F(ObjCHostScreens, AOneTimeCodeReachesTheHostsBlocks) {
    LuOTPView* const view = [[LuOTPView new] autorelease];
    NSMutableArray* const heard = [NSMutableArray array];
    view.otpEnteredString = ^(NSString* code) {
        [heard addObject:code];
    };
    view.isEditing = ^(BOOL isEditing) {
        [heard addObject:[NSNumber numberWithBool:isEditing]];
    };
    view.frame = NSMakeRect(0, 80, 300, 60);
    [start.view addSubview:view];
    settle();
    EXPECT_EQ([start.view.subviews lastObject], view);
    [[view fieldWithTag:1] nativeView]->becomeFirstResponder();
    for (const auto* digit : {"1", "2", "3", "4"}) {
        static_cast<platform::TextField&>(*platform::Keyboard::firstResponder()).insertText(digit);
    }
    EXPECT_TRUE([heard containsObject:@"1234"]);
    EXPECT_EQ([heard count], 9U) << "the code, and each field as it gets and loses the focus";
    EXPECT_TRUE(view.hasEnteredAllOTP);
    EXPECT_TRUE([view.secureEntryData isEqual:(@[ @"1", @"2", @"3", @"4" ])]);
    view.otpEnteredString(@"5678");
    EXPECT_TRUE([[heard lastObject] isEqual:@"5678"]);
    view.otpEnteredString = nil;
    EXPECT_EQ(view.otpEnteredString, nil);
    EXPECT_EQ([view fieldWithTag:5], nil);
    EXPECT_EQ(view.aciveTextField, [view fieldWithTag:4]);
}

TEST_F(ObjCHostScreens, AHostsOwnScreenAsksForTheCode) {
    NSArray* events = nil;
    @autoreleasepool {
        StartScreen* const screen = [[StartScreen new] autorelease];
        events = [screen.events retain];
        KivoNavigationController* const stack =
            [[[KivoNavigationController alloc] initWithRootViewController:screen] autorelease];
        KivoWindow* const phone = [[KivoWindow new] autorelease];
        phone.rootViewController = stack;
        EXPECT_EQ(phone.rootViewController, stack);
        EXPECT_EQ(screen.navigationController, stack);
        settle();
        [phone layoutIfNeeded];
        EXPECT_TRUE([[phone hitTest:NSMakePoint(195, 225)] touch]);
        settle();
        EXPECT_EQ([stack.viewControllers count], 2U);
        EXPECT_EQ(phone.visibleViewController, stack.topViewController);
        int digit = 0;
        for (NSString* box in @[ @"One", @"Two", @"Three", @"Four", @"Five", @"Six" ]) {
            KivoView* const field = [phone find:[@"textFieldDigit" stringByAppendingString:box]];
            EXPECT_TRUE([field isKindOfClass:[KivoTextField class]]);
            [static_cast<KivoTextField*>(field) insertText:[NSString stringWithFormat:@"%d", ++digit]];
        }
        settle(1s);
        EXPECT_EQ(phone.visibleViewController, screen);
        EXPECT_EQ([stack popViewController], nil) << "the root stays";
        phone.rootViewController = nil;
        settle();
    }
    settle(1s);
    EXPECT_EQ(std::string{[[events componentsJoinedByString:@" "] UTF8String]},
              "didLoad willAppear didAppear willDisappear didDisappear 123456 willAppear didAppear willDisappear "
              "didDisappear");
    EXPECT_EQ([events retainCount], 1U) << "the screen is gone";
    [events release];
}

TEST_F(ObjCHostScreens, TheClosingScreenTellsItsDelegateThatItHasGone) {
    folder.write("Host.bundle/Bank.storyboard", R"({"scenes": {"End": {"class": "FinalStatusVC", "view": {"subviews": [
        {"type": "Label", "outlet": "completeTitleLabel"}, {"type": "Label", "outlet": "closeAppInfoLabel"},
        {"type": "Button", "outlet": "backToHomeButton", "placement": {"width": 200, "height": 50},
         "actions": {"touchUpInside": "newDocSigningTap"}}]}}}})");
    const auto screenNamed = [](NSString* identifier) {
        return static_cast<FinalStatusVC*>([KivoViewController viewControllerWithIdentifier:identifier
                                                                               inStoryboard:@"Bank"
                                                                                   ofBundle:[KivoBundle mainBundle]]);
    };
    EXPECT_EQ(screenNamed(@"Start"), nil);
    const auto showAndLeave = [&](FinalStatusVC* screen) {
        [start presentViewController:screen];
        settle();
        [start dismiss];
        settle();
    };
    Farewells* const farewells = [[Farewells new] autorelease];
    @autoreleasepool {
        FinalStatusVC* const screen = screenNamed(@"End");
        ASSERT_TRUE([screen isKindOfClass:[FinalStatusVC class]]);
        screen.delegate = farewells;
        screen.sessionObject = [::ActivationResponse responseWithText:@"{\"tid\":\"T1\"}"];
        EXPECT_TRUE([screen.sessionObject.tId isEqual:@"T1"]);
        EXPECT_EQ(screen.delegate, farewells);
        showAndLeave(screen);
    }
    settle(1s);
    EXPECT_EQ(farewells->count, 1);
    EXPECT_EQ([farewells retainCount], 1U) << "nothing holds the delegate any more";
    int deaths = 0;
    @autoreleasepool {
        Farewells* const owner = [Farewells new];
        owner->deaths = &deaths;
        owner->screen = [screenNamed(@"End") retain];
        owner->screen.delegate = owner;
        showAndLeave(owner->screen);
        settle(100ms);
        EXPECT_EQ(owner->count, 1);
        [owner release];
    }
    settle(1s);
    EXPECT_EQ(deaths, 1) << "not retained while it goes";
}

} // namespace
