#import "Host.h"
#include "support/TemporaryFolder.hpp"

#include <kivo/c/theme.h>
#import <kivo/objc/KivoNative.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace platform = kivo::platform;

/// A member of a C++ class, as its public header declares it.
struct Member {
    bool isOfClass = false;
    std::string type;
    std::string name;
};

std::string contentsOf(const char* header) {
    return kivo::test::contentOf(std::filesystem::path{KIVO_PUBLIC_HEADERS} / header);
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
    NSString* const name = [NSString stringWithFormat:@"/%d", number];
    const std::pair<const char*, id> samples[] = {
        {"Settings", @{@"key" : name}},
        {"JoinPages", @[ @"a", @"b", @"c", name ]},
        {"string", name},
        {"Color", [KivoColor colorWithRed:0.01 * number green:0 blue:0.5 alpha:1]},
        {"Font", [KivoFont systemFontOfSize:number]},
        {"Image", [KivoImage imageWithContentsOfFile:name]},
        {"double", [NSNumber numberWithInt:100 + number]},
        {"_ptr<", current},
    };
    for (const auto& [part, sample] : samples) {
        if (type.contains(part)) {
            return sample;
        }
    }
    return [NSNumber numberWithInt:type == "int" ? 100 + number : [current intValue] == 0];
}

TEST(ObjCProperties, AreThoseOfTheLibraryAndKeepTheirValuesApart) {
    @autoreleasepool {
        KivoViewController* const closing =
            [KivoViewController viewControllerWithNative:std::make_shared<kivo::FinalStatusVC>()];

        const struct {
            const char* header;
            const char* className;
            id object;
        } classes[] = {
            {"kivo/ThemeCustomization.hpp", "ThemeCustomization", [ThemeCustomization new]},
            {"kivo/ZorCloseButtonAppearance.hpp", "ZorCloseButtonAppearance", [ZorCloseButtonAppearance new]},
            {"kivo/platform/ReadID.hpp", "UIResources", [ThemeCustomization.passportScanViewCustomization retain]},
            {"kivo/ReadIDUIResourcesWrapper.hpp", "ReadIDUIResourcesWrapper", [ReadIDUIResourcesWrapper new]},
            {"kivo/Deployment.hpp", "Deployment", [KivoDeployment new]},
            {"kivo/ActivationResponse.hpp", "ActivationResponse", [::ActivationResponse new]},
            {"kivo/FinalStatusVC.hpp", "FinalStatusVC", [closing retain]},
            {"kivo/LuOTPView.hpp", "LuOTPView", [LuOTPView new]},
            {"kivo/LuOTPTextField.hpp", "LuOTPTextField", [LuOTPTextField new]},
            {"kivo/AcquisitionConfig.hpp", "AcquisitionConfig", [[Host config] retain]},
        };

        for (const auto& each : classes) {
            [each.object autorelease];
            const auto members = membersOf(each.header, each.className);
            EXPECT_FALSE(members.empty()) << each.className;
            NSMutableDictionary* const values = [NSMutableDictionary dictionary];
            for (const auto& member : members) {
                if (member.type.contains("platform::Layer")) {
                    continue; // for Objective-C++, through KivoNative.h
                }
                if (std::string_view{each.className} == "ThemeCustomization" && !member.isOfClass &&
                    !member.type.contains("_ptr<")) {
                    EXPECT_NE(kivo_theme_property_kind(kivo_text_of(member.name.c_str())), KIVO_PROPERTY_UNKNOWN)
                        << "there is no " << member.name << " in C";
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

class ObjCLooks : public testing::Test {
protected:
    ~ObjCLooks() override { [pool drain]; }

    NSAutoreleasePool* pool = [NSAutoreleasePool new];
    ThemeCustomization* theme = [[ThemeCustomization new] autorelease];
    std::shared_ptr<kivo::ThemeCustomization> native = [theme nativeTheme];
};

TEST_F(ObjCLooks, ReachTheThemeThatTheScreensRead) {
    theme.codeScreenGetStartedTitle = @"d\u00e9but";
    theme.codeTextFieldStyle = CodeTextFieldStyleSingle;
    theme.enableDynamicTextSizes = NO;
    theme.screenTitleColor = [KivoColor colorWithRed:0.1 green:0.2 blue:0.3 alpha:0.4];
    theme.screenTitleFont = [KivoFont systemFontOfSize:21];
    theme.allowNFCSkipReadingAfterAttempts = 5;
    theme.appBundle = [KivoBundle bundleWithIdentifier:@"com.test.ZORFramework"];
    EXPECT_EQ(native->codeScreenGetStartedTitle, "d\u00e9but");
    EXPECT_EQ(native->codeTextFieldStyle, kivo::CodeTextFieldStyle::single);
    EXPECT_FALSE(native->enableDynamicTextSizes);
    EXPECT_EQ(native->screenTitleColor, (platform::Color{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(native->screenTitleFont, platform::Font::system(21));
    EXPECT_EQ(native->allowNFCSkipReadingAfterAttempts, 5);
    EXPECT_EQ(native->appBundle->bundleIdentifier(), "com.test.ZORFramework");

    theme.codeScreenGetStartedTitle = static_cast<NSString* _Nonnull>(nil);
    theme.screenTitleColor = static_cast<KivoColor* _Nonnull>(nil);
    theme.screenTitleFont = nil;
    EXPECT_EQ(native->codeScreenGetStartedTitle, "");
    EXPECT_EQ(native->screenTitleColor, platform::Color::clear());
    EXPECT_FALSE(native->screenTitleFont);
    EXPECT_EQ(theme.screenTitleFont, nil);

    ZorCloseButtonAppearance* const look = theme.zorCloseButtonAppearance;
    EXPECT_EQ(look, theme.zorCloseButtonAppearance) << "one object";
    look.closeButtonCornerRadius = @3.5;
    look.closeButtonImage = [KivoImage imageWithContentsOfFile:@"/pictures/cross.png"];
    EXPECT_EQ(native->zorCloseButtonAppearance->closeButtonCornerRadius, 3.5);
    EXPECT_EQ(native->zorCloseButtonAppearance->closeButtonImage->file, "/pictures/cross.png");
    look.closeButtonCornerRadius = nil;
    EXPECT_FALSE(native->zorCloseButtonAppearance->closeButtonCornerRadius);
    theme.zorCloseButtonAppearance = nil;
    EXPECT_EQ(native->zorCloseButtonAppearance, nullptr);
}

TEST_F(ObjCLooks, ReachTheVendorsScreens) {
    EXPECT_EQ(theme.faceVerificationUICustomization, nil) << "no vendor is installed";
    const auto vendors = std::make_shared<platform::FaceTecCustomization>();
    KivoFaceTecCustomization* const look = [KivoFaceTecCustomization customizationWithNative:vendors];
    look.retryScreenSlideshowImages = @[ [KivoImage imageWithContentsOfFile:@"/pictures/ideal.png"] ];
    theme.faceVerificationUICustomization = look;
    EXPECT_EQ(native->faceVerificationUICustomization.get(), vendors.get());
    EXPECT_EQ(vendors->guidanceCustomization.retryScreenSlideshowImages.at(0)->file, "/pictures/ideal.png");
    EXPECT_EQ([look.retryScreenSlideshowImages count], 1U);

    ReadIDUIResourcesWrapper* const wrapper = [[ReadIDUIResourcesWrapper new] autorelease];
    KivoReadIDUIResources* const resources = ThemeCustomization.passportScanViewCustomization;
    resources.customStringTableName = nil;
    EXPECT_TRUE([wrapper.customStringTableName isEqual:@""]);
    wrapper.customStringTableName = @"Reading";
    EXPECT_TRUE([resources.customStringTableName isEqual:@"Reading"]);
    wrapper.customStringTableName = @"";
    EXPECT_EQ(resources.customStringTableName, nil);
}

TEST_F(ObjCLooks, ReachViewsAndTheirLayers) {
    KivoButton* const button = [[KivoButton new] autorelease];
    const auto& layer = [button nativeView]->layer();
    const auto contents = contentsOf("kivo/ui/LayerStyle.hpp");
    static const std::regex getter{R"( (\w+)\(const platform::View& view\))"};
    for (std::sregex_iterator each{contents.begin(), contents.end(), getter}; each != std::sregex_iterator{}; ++each) {
        EXPECT_TRUE([button respondsToSelector:NSSelectorFromString(text((*each)[1]))]) << (*each)[1];
    }
    button.cornerRadiusExt = 4;
    button.borderWidthExt = 2;
    button.borderColorExt = [KivoColor colorWithRed:1 green:0 blue:0 alpha:1];
    button.shadowRadiusExt = 6;
    EXPECT_TRUE(layer.masksToBounds && button.cornerRadiusExt == 4);
    EXPECT_EQ(button.borderWidthExt, 2);
    EXPECT_EQ(layer.borderColor, (platform::Color{1, 0, 0, 1}));
    EXPECT_EQ(layer.shadowOffset, (platform::Size{0, 2}));
    EXPECT_EQ(button.shadowRadiusExt, 6);
    button.borderColorExt = nil;
    EXPECT_FALSE(layer.borderColor || button.borderColorExt);
    [button applyPrimaryButtonStyleWithBorderColor:[KivoColor colorWithRed:0 green:0 blue:1 alpha:1]
                                      cornerRadius:0
                                       borderWidth:3];
    EXPECT_EQ(layer.borderWidth, 3);
    EXPECT_EQ(layer.borderColor, (platform::Color{0, 0, 1, 1}));
    EXPECT_TRUE(layer.masksToBounds) << "a main button clips whatever its radius";

    KivoColor* const ink = [KivoColor colorWithRed:0 green:0 blue:0 alpha:1];
    KivoColor* const paper = [KivoColor colorWithRed:1 green:1 blue:1 alpha:1];
    button.backgroundColor = [KivoColor colorWithLight:paper dark:ink];
    KivoWindow* const window = [[KivoWindow new] autorelease];
    [window addSubview:button];
    for (KivoColor* const shown in @[ paper, ink ]) {
        window.userInterfaceStyle = shown == ink ? KivoUserInterfaceStyleDark : KivoUserInterfaceStyleLight;
        EXPECT_TRUE([[button.backgroundColor colorInStyle:button.userInterfaceStyle] isEqual:shown]);
    }

    ZorCloseButtonAppearance* const look = [[ZorCloseButtonAppearance new] autorelease];
    look.closeButtonTitle = @"Leave";
    look.closeButtonIsHidden = NO;
    KivoLayoutConstraint* const width = [KivoLayoutConstraint widthOfView:button];
    KivoLayoutConstraint* const height = [KivoLayoutConstraint heightOfView:button];
    [look applyAppearanceCloseButtonWithCloseButton:button widthConstraint:width heightConstraint:height];
    EXPECT_TRUE([button.title isEqual:@"Leave"] && !button.isHidden);
    EXPECT_EQ([button nativeView]->placement().width, 75);
    EXPECT_EQ(width.constant, 75);
    EXPECT_EQ(height.constant, 35);
    KivoView* const view = [[KivoView new] autorelease];
    button.identifier = @"closeButton";
    [view addSubview:button];
    EXPECT_EQ([view find:@"closeButton"], button);
    EXPECT_TRUE([button.accessibilityLabel isEqual:@"Leave"]);
    button.accessibilityLabel = @"Leave the bank";
    button.accessibilityHint = @"Nothing is kept";
    button.accessibilityHidden = YES;
    const platform::Accessibility expected{.label = "Leave the bank", .hint = "Nothing is kept", .isHidden = true};
    EXPECT_EQ([button nativeView]->accessibility(), expected);
}

} // namespace
