// The colours and texts that the screens come with.
#include "Configuration/environment/SdkBundle.hpp"
#include "platform/bundle/FolderBundles.hpp"
#include "platform/bundle/StringsFile.hpp"
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace kivo {
namespace {

using platform::Color;
using platform::UserInterfaceStyle;
using Resources = test::HostScreenFixture;

/// The contrast of two opaque colours in the sense of the Web Content Accessibility Guidelines, from 1 to 21.
double contrast(const Color& one, const Color& other) {
    const auto luminance = [](const Color& color) {
        const auto linear = [](double level) {
            return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

TEST_F(Resources, ColoursAreReadableInTheLightAndInTheDark) {
    constexpr double text = 7;
    constexpr double symbol = 4.5;

    const struct {
        const char* ink;
        double least;
        std::vector<const char*> grounds;
    } rows[] = {
        {"Kivo.black", text, {"Kivo.Background", "Kivo.Surface", "Kivo.AccentTint"}},
        {"Kivo.HeaderTextColor", text, {"Kivo.Background", "Kivo.Surface"}},
        {"Kivo.SecondaryTextColor", text, {"Kivo.Background", "Kivo.Surface"}},
        {"Kivo.ErrorColor", text, {"Kivo.Background", "Kivo.Surface"}},
        {"Kivo.SuccessColor", text, {"Kivo.Background"}},
        {"Kivo.PrimaryColor", text, {"Kivo.Background", "Kivo.Surface"}},
        {"Kivo.TextFieled.BorderColor", symbol, {"Kivo.Background", "Kivo.Surface"}},
        {"Kivo.TextFieled.active.BorderColor", symbol, {"Kivo.Background", "Kivo.Surface"}},
        {nullptr, symbol, {"Kivo.Button.BackgroundColor"}}, // white titles
    };

    for (const auto style : {UserInterfaceStyle::light, UserInterfaceStyle::dark}) {
        const auto named = [&](const char* name) {
            const auto color = sdkBundle()->color(name);
            EXPECT_TRUE(color && color->dark) << name << " has no dark variant";
            return color.value_or(Color{}).in(style);
        };
        for (const auto& row : rows) {
            for (const auto* ground : row.grounds) {
                const auto ink = row.ink != nullptr ? named(row.ink) : Color::white();
                EXPECT_GE(contrast(ink, named(ground)), row.least)
                    << (row.ink != nullptr ? row.ink : "white") << " on " << ground << ", "
                    << (style == UserInterfaceStyle::dark ? "dark" : "light");
            }
        }
    }
}

/// The texts of a layout, which are the keys of their translations.
void collectTexts(const nlohmann::json& value, std::set<std::string>& texts) {
    for (const auto& [name, member] : value.items()) {
        const bool isText = name == "text" || name == "title" || name == "placeholder" || name == "accessibilityLabel";
        if (isText && member.is_string() && !member.get<std::string>().empty()) {
            texts.insert(member);
        } else if (member.is_structured()) {
            collectTexts(member, texts);
        }
    }
}

TEST_F(Resources, EveryTextIsTranslatedIntoEveryLanguageAndNotMuchLonger) {
    const auto layout = *sdkBundle()->pathForResource("ZORFramework", "storyboard");
    std::ifstream file{layout};
    std::set<std::string> texts{"Back",
                                "Cancel",
                                "OK",
                                "Character %1 of %2",
                                "Are you sure, you want to terminate the process?",
                                "There is no connection to the service. Check the network, then enter the code again.",
                                "That did not work. Wait for a while, then enter the code again.",
                                "The camera cannot be used here. Type the code instead."};
    collectTexts(nlohmann::json::parse(file, nullptr, true, /*ignore_comments=*/true), texts);
    std::vector<std::string> languages;
    for (const auto& entry : std::filesystem::directory_iterator{layout.parent_path()}) {
        if (entry.path().extension() != ".lproj") {
            continue;
        }
        languages.push_back(entry.path().stem());
        std::ifstream strings{entry.path() / "Localizable.strings"};
        const auto table = platform::readStringsFile(std::string{std::istreambuf_iterator{strings}, {}});
        ASSERT_TRUE(table) << languages.back() << " " << table.error();
        std::set<std::string> keys;
        for (const auto& [key, text] : *table) {
            keys.insert(key);
            const auto length = kivo::text::characterCount(text);
            EXPECT_GT(length, 0U) << languages.back() << ": " << key;
            EXPECT_LE(length, kivo::text::characterCount(key) * 3 / 2 + 18) << languages.back() << ": " << text;
        }
        EXPECT_EQ(keys, texts) << languages.back();
    }
    EXPECT_THAT(languages, testing::UnorderedElementsAre("ar", "de", "en", "es", "fr", "ja", "pl"));
}

TEST_F(Resources, AHostThatSpeaksOneLanguageGetsNoScreensInAnother) {
    folder.write("Host.bundle/fr.lproj/Localizable.strings", R"("Get started" = "Bonjour";)");
    setenv("LC_ALL", "fr_CA.UTF-8", /*overwrite=*/1);
    const auto textOf = [&](const char* outlet) {
        const auto layouts = *platform::services()
                                  .bundles->withIdentifier("com.test.ZORFramework")
                                  ->pathForResource("ZORFramework", "storyboard");
        platform::Services services;
        services.bundles = platform::makeFolderBundles(folder.path() / "Host.bundle", layouts.parent_path(),
                                                       platform::services().diagnostics);
        platform::install(services);
        return instantiate("QRCodeVC")->view()->find<platform::Label>(outlet)->text();
    };
    EXPECT_EQ(textOf("getStartedTitleLabel"), "Bonjour");
    EXPECT_EQ(textOf("orTitleLabel"), "ou");
    setenv("LC_ALL", "de_DE.UTF-8", /*overwrite=*/1);
    folder.write("Host.bundle/en.lproj/Localizable.strings", R"("Get started" = "Welcome";)");
    EXPECT_EQ(textOf("getStartedTitleLabel"), "Welcome");
    EXPECT_EQ(textOf("orTitleLabel"), "or");
    unsetenv("LC_ALL");
}

} // namespace
} // namespace kivo
