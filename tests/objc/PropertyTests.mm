#import "Host.h"

#import <kivo/objc/KivoNative.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

/// A member of a C++ class, as its public header declares it.
struct Member {
    bool isOfClass = false;
    std::string type;
    std::string name;
};

std::string contentsOf(const char* header) {
    std::ifstream file{std::filesystem::path{KIVO_PUBLIC_HEADERS} / header};
    return {std::istreambuf_iterator{file}, {}};
}

NSString* text(const std::string& value) {
    return [NSString stringWithUTF8String:value.c_str()];
}

std::string setterOf(const std::string& name) {
    return std::string{"set"} + static_cast<char>(std::toupper(name.front())) + name.substr(1);
}

/// The variables of a class, its functions that have a setter beside them, and those of the class without arguments.
std::vector<Member> membersOf(const char* header, const std::string& className) {
    static const std::regex declaration{
        R"(\n    (static )?(?:const )?(?!return|using|explicit)([\w:<>, ]+)&? (\w+)(\(\)(?: const)?)?(?: = [^\n]*|\{[^\n]*\})?;)"};
    const auto contents = contentsOf(header);
    std::smatch start;
    std::regex_search(contents, start, std::regex{"(?:class|struct) (?:KIVO_EXPORT )?" + className + "\\b[^;{]*\\{"});
    const auto rest = start.suffix().str();
    const auto body = rest.substr(0, std::min(rest.find("\n};"), rest.find("\nprivate:")));
    std::vector<Member> members;
    for (std::sregex_iterator each{body.begin(), body.end(), declaration}; each != std::sregex_iterator{}; ++each) {
        const Member member{(*each)[1].matched, (*each)[2], (*each)[3]};
        const bool isFunction = (*each)[4].matched;
        if (!isFunction || member.isOfClass || body.contains("void " + setterOf(member.name) + "(")) {
            members.push_back(member);
        }
    }
    return members;
}

/// Something else than `current` for a member of the C++ type `type`.
id another(const std::string& type, id current, int number) {
    if (type.contains("Settings")) {
        return @{@"key" : [NSString stringWithFormat:@"%d", number]};
    }
    if (type.contains("array")) {
        return @[ @"a", @"b", @"c", [NSString stringWithFormat:@"%d", number] ];
    }
    if (type.contains("string")) {
        return [NSString stringWithFormat:@"text %d", number];
    }
    if (type.contains("Color")) {
        return [KivoColor colorWithRed:0.01 * number green:0 blue:0.5 alpha:1];
    }
    if (type.contains("Font")) {
        return [KivoFont systemFontOfSize:number];
    }
    if (type.contains("Image")) {
        return [KivoImage imageWithContentsOfFile:[NSString stringWithFormat:@"/%d.png", number]];
    }
    if (type == "double" || type == "int" || type == "std::optional<double>") {
        return [NSNumber numberWithInt:100 + number];
    }
    if (type.contains("_ptr<")) {
        return current;
    }
    return [NSNumber numberWithInt:[current intValue] == 0];
}

TEST(ObjCProperties, AreThoseOfTheLibraryAndKeepTheirValuesApart) {
    @autoreleasepool {
        const struct {
            const char* header;
            const char* className;
            id object;
        } classes[] = {
            {"kivo/ThemeCustomization.hpp", "ThemeCustomization", [[ThemeCustomization new] autorelease]},
            {"kivo/ZorCloseButtonAppearance.hpp", "ZorCloseButtonAppearance",
             [[ZorCloseButtonAppearance new] autorelease]},
            {"kivo/platform/ReadID.hpp", "UIResources", ThemeCustomization.passportScanViewCustomization},
            {"kivo/ReadIDUIResourcesWrapper.hpp", "ReadIDUIResourcesWrapper",
             [[ReadIDUIResourcesWrapper new] autorelease]},
            {"kivo/Deployment.hpp", "Deployment", [[KivoDeployment new] autorelease]},
            {"kivo/ActivationResponse.hpp", "ActivationResponse", [[::ActivationResponse new] autorelease]},
            {"kivo/FinalStatusVC.hpp", "FinalStatusVC",
             [KivoViewController viewControllerWithNative:std::make_shared<kivo::FinalStatusVC>()]},
            {"kivo/LuOTPView.hpp", "LuOTPView", [[LuOTPView new] autorelease]},
            {"kivo/LuOTPTextField.hpp", "LuOTPTextField", [[LuOTPTextField new] autorelease]},
            {"kivo/AcquisitionConfig.hpp", "AcquisitionConfig", [Host config]},
        };

        for (const auto& each : classes) {
            const auto members = membersOf(each.header, each.className);
            EXPECT_FALSE(members.empty()) << each.className;
            NSMutableDictionary* const values = [NSMutableDictionary dictionary];
            for (const auto& member : members) {
                if (member.type.contains("platform::Layer")) {
                    continue; // for Objective-C++, through KivoNative.h
                }
                NSString* const name = text(member.name);
                const SEL getter = NSSelectorFromString(name);
                if (member.isOfClass) {
                    EXPECT_TRUE([[each.object class] respondsToSelector:getter]) << each.className << member.name;
                    continue;
                }
                const SEL setter = NSSelectorFromString(text(setterOf(member.name) + ":"));
                if (![each.object respondsToSelector:getter] || ![each.object respondsToSelector:setter]) {
                    ADD_FAILURE() << each.className << " has no " << member.name << " in Objective-C";
                    continue;
                }
                const id value =
                    another(member.type, [each.object valueForKey:name], static_cast<int>([values count]) + 1);
                [each.object setValue:value forKey:name];
                if (value) {
                    [values setObject:value forKey:name];
                }
            }
            for (NSString* name in values) {
                EXPECT_TRUE([[each.object valueForKey:name] isEqual:[values objectForKey:name]])
                    << each.className << ' ' << [name UTF8String];
            }
        }
    }
}

TEST(ObjCProperties, OfAViewAreThoseOfItsLayer) {
    @autoreleasepool {
        KivoView* const view = [[KivoView new] autorelease];
        const auto contents = contentsOf("kivo/ui/LayerStyle.hpp");
        static const std::regex getter{R"( (\w+)\(const platform::View& view\))"};
        for (std::sregex_iterator each{contents.begin(), contents.end(), getter}; each != std::sregex_iterator{};
             ++each) {
            EXPECT_TRUE([view respondsToSelector:NSSelectorFromString(text((*each)[1]))]) << (*each)[1];
        }
        view.cornerRadiusExt = 4;
        view.borderWidthExt = 2;
        view.borderColorExt = [KivoColor colorWithRed:1 green:0 blue:0 alpha:1];
        view.shadowRadiusExt = 6;
        const auto& layer = [view nativeView]->layer();
        EXPECT_TRUE(layer.masksToBounds && view.cornerRadiusExt == 4);
        EXPECT_EQ(view.borderWidthExt, 2);
        EXPECT_EQ(layer.borderColor, (kivo::platform::Color{1, 0, 0, 1}));
        EXPECT_EQ(layer.shadowOffset, (kivo::platform::Size{0, 2}));
        EXPECT_EQ(view.shadowRadiusExt, 6);
        view.borderColorExt = nil;
        EXPECT_FALSE(layer.borderColor || view.borderColorExt);
        [view applyPrimaryButtonStyleWithBorderColor:[KivoColor colorWithRed:0 green:0 blue:1 alpha:1]
                                        cornerRadius:0
                                         borderWidth:3];
        EXPECT_TRUE(layer.masksToBounds);
        EXPECT_EQ(layer.borderWidth, 3);
        EXPECT_EQ(layer.borderColor, (kivo::platform::Color{0, 0, 1, 1}));
    }
}

TEST(ObjCProperties, CloseButtonsGetTheirLook) {
    @autoreleasepool {
        KivoViewController* const screen = [[KivoViewController new] autorelease];
        KivoButton* const button = [[KivoButton new] autorelease];
        button.identifier = @"closeButton";
        [screen.view addSubview:button];
        EXPECT_EQ([screen.view find:@"closeButton"], button);
        ZorCloseButtonAppearance* const look = [[ZorCloseButtonAppearance new] autorelease];
        look.closeButtonTitle = @"Leave";
        look.closeButtonIsHidden = NO;
        look.closeButtonFont = [KivoFont systemFontOfSize:11];
        KivoLayoutConstraint* const width = [KivoLayoutConstraint widthOfView:button];
        KivoLayoutConstraint* const height = [KivoLayoutConstraint heightOfView:button];
        [look applyAppearanceCloseButtonWithCloseButton:button widthConstraint:width heightConstraint:height];
        EXPECT_TRUE([button.title isEqual:@"Leave"] && !button.isHidden);
        EXPECT_TRUE([button.font isEqual:look.closeButtonFont]);
        EXPECT_EQ(button.cornerRadiusExt, 17.5);
        EXPECT_EQ([button nativeView]->placement().width, 75);
        EXPECT_EQ(width.constant, 75);
        EXPECT_EQ(height.constant, 35);
    }
}

} // namespace
