#include "platform/bundle/FolderBundles.hpp"

#include "platform/bundle/PropertyListReader.hpp"
#include "platform/bundle/StringsFile.hpp"
#include "platform/linux/LinuxParts.hpp"
#include "support/Program.hpp"
#include "support/PropertyLists.hpp"
#include "support/RecordedDiagnostics.hpp"
#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <thread>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

class FolderBundlesTest : public testing::Test {
protected:
    FolderBundlesTest() {
        unsetenv("LC_ALL");
        unsetenv("LC_MESSAGES");
        setenv("LANG", "C.UTF-8", 1);
    }

    void write(const fs::path& name, const std::string& bytes) const { temporary.write(name, bytes); }

    std::shared_ptr<Bundles> bundles() const {
        return makeFolderBundles(folder / "app.bundle", folder / "sdk.bundle", diagnostics);
    }

    std::shared_ptr<Bundle> main() const { return bundles()->main(); }

    const test::TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    std::shared_ptr<test::RecordedDiagnostics> diagnostics = std::make_shared<test::RecordedDiagnostics>();
};

TEST_F(FolderBundlesTest, FindsTheBundleOfAProgramThatWasReplacedWhileItRuns) {
    const auto program = folder / "host";
    fs::copy_file(KIVO_TEST_PROGRAMS "/ReplacedHost", program);
    write("host.bundle/Info.plist",
          test::propertyList("<dict><key>CFBundleIdentifier</key><string>com.example.app</string></dict>"));
    EXPECT_EQ(test::run(program.string()).output, "com.example.app");
}

TEST_F(FolderBundlesTest, FindsTheBundlesOfOtherLibrariesInTheHostsLanguage) {
    const auto info = [](const std::string& name) {
        return test::propertyList("<dict><key>CFBundleIdentifier</key><string>" + name + "</string></dict>");
    };
    write("sdk.bundle/Info.plist", info("sdk"));
    write("reader.bundle/Info.plist", info("reader"));
    write("reader.bundle/fr.lproj/Localizable.strings", R"("Back" = "Retour";)");
    write("app.bundle/fr.lproj/Localizable.strings", R"("Welcome" = "Bonjour";)");
    write("other/Info.plist", info("other"));
    setenv("LANG", "de_DE.UTF-8", 1);
    write("app.bundle/Info.plist",
          test::propertyList("<dict><key>CFBundleIdentifier</key><string>app</string>"
                             "<key>CFBundleDevelopmentRegion</key><string>fr</string></dict>"));
    const auto all = bundles();
    ASSERT_TRUE(all->withIdentifier("reader"));
    EXPECT_EQ(all->withIdentifier("reader")->localizedString("Back"), "Retour");
    EXPECT_EQ(all->withIdentifier("reader"), all->withIdentifier("reader"));
    EXPECT_EQ(all->withIdentifier("app"), all->main());
    EXPECT_EQ(all->withIdentifier("other"), nullptr) << "a folder of another name";
}

TEST_F(FolderBundlesTest, TellsOnceOfAMissingSdkBundle) {
    const auto all = bundles();
    EXPECT_EQ(all->main()->localizedString("key"), "key");
    EXPECT_THAT(diagnostics->texts(), IsEmpty()) << "a host may have none";
    EXPECT_EQ(all->withIdentifier("a"), nullptr);
    EXPECT_EQ(all->withIdentifier("a"), nullptr);
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("sdk.bundle\" does not exist; install")));
}

TEST(PropertyListReader, ReadsTheSameFromEveryForm) {
    const auto text = test::propertyList(
        "<dict><key>text</key><string>a &lt; \xE2\x82\xAC</string><key>number</key>"
        "<integer>-5</integer><key>real</key><real>1.5</real><key>flag</key><true/>"
        "<key>bytes</key><data>AA EC\nAw==</data><key>list</key><array><string>x</string><dict/></array>"
        "<key>date</key><date>2026-01-31T08:15:00Z</date><key>hex</key><integer>0X1f</integer>"
        "<key>plus</key><integer> +12 </integer></dict>");
    const auto all = readPropertyList(text);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->dictionary()->size(), 9U);
    EXPECT_EQ(readPropertyList(test::binaryPropertyList(text)), all);
    EXPECT_EQ(readPropertyList("\xEF\xBB\xBF" + text), all);
}

TEST_F(FolderBundlesTest, TellsOnceOfAPropertyListThatCannotBeRead) {
    const auto whole = test::binaryPropertyList(test::propertyList("<dict><key>a</key><string>b</string></dict>"));
    auto keyWithZero = whole;
    keyWithZero[keyWithZero.find("Qa") + 1] = '\0';
    const auto deep = test::propertyList(repeated("<array>", 200'000) + repeated("</array>", 200'000));

    const std::pair<std::string, std::string> rows[] = {
        {"", "not a well-formed"},
        {"no property list", "not a well-formed"},
        {"<plist><dict><key>a</key>", "not a well-formed"},
        {whole.substr(0, 40), "damaged"},
        {"bplist00", "damaged"},
        {deep, "nested too deeply"},
        {test::propertyList("<array>" + repeated("<true/>", 100'000) + "</array>"), "holds too much"},
        {test::propertyList("<dict><key>a</key></dict>"), "not a well-formed"},
        {test::propertyList("<array><integer>5 apples</integer></array>"), "not a well-formed"},
        {test::propertyList("<array><integer>0x</integer></array>"), "not a well-formed"},
        {test::propertyList("<array><date>2026-01-31</date></array>"), "not a well-formed"},
        {test::propertyList("<array><data>A</data></array>"), "not a well-formed"},
        {test::propertyList("<array><data>AA=A</data></array>"), "not a well-formed"},
        {test::propertyList("<array>text</array>"), "not a well-formed"},
        {test::propertyList("<array><set/></array>"), "not a well-formed"},
        {test::propertyList("<dict><string>a</string></dict>"), "not a well-formed"},
        {test::propertyList("<array/><array/>"), "not a well-formed"},
        {"bplist00" + std::string(31, '\0'), "damaged"},
        {test::propertyList(std::string{"<array><string>a\0b</string></array>", 36}), "not a well-formed"},
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><array/></plist>", "not a well-formed"},
        {"<!DOCTYPE plist SYSTEM \"x\"><plist><string>&a;</string></plist>", "not a well-formed"},
        {keyWithZero, "damaged"},
        {test::propertyList("<string>alone</string>"), "holds a single value"},
        {std::string((4 << 20) + 1, ' '), "larger than 4 MiB"},
    };
    for (const auto& [bytes, problem] : rows) {
        diagnostics->clear();
        write("app.bundle/broken.plist", bytes);
        const auto bundle = main();
        EXPECT_EQ(bundle->propertyList("broken"), std::nullopt);
        EXPECT_EQ(bundle->propertyList("broken"), std::nullopt);
        EXPECT_THAT(diagnostics->texts(),
                    ElementsAre(AllOf(HasSubstr("app.bundle/broken.plist\""), HasSubstr(problem), HasSubstr("; put"))));
    }
    diagnostics->clear();
    fs::create_directories(folder / "app.bundle/folder.plist");
    EXPECT_EQ(main()->propertyList("folder"), std::nullopt);
    EXPECT_EQ(main()->propertyList("missing"), std::nullopt);
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("folder.plist\" is not a file")));
}

TEST(PropertyListReader, TakesBinaryDatesOfFourDigitYears) {
    const auto dated = [](double seconds) {
        std::string bytes;
        for (auto bits = std::bit_cast<std::uint64_t>(seconds); bytes.size() < 8; bits <<= 8) {
            bytes += static_cast<char>(bits >> 56);
        }
        return readPropertyList("bplist00\x33" + bytes + '\x08' + std::string(6, '\0') + "\x01\x01" +
                                std::string(7, '\0') + '\x01' + std::string(15, '\0') + '\x11');
    };
    EXPECT_EQ(*dated(-63'113'904'000)->text(), "0001-01-01T00:00:00Z");
    EXPECT_EQ(*dated(0.9)->text(), "2001-01-01T00:00:00Z");
    EXPECT_EQ(*dated(252'423'993'599)->text(), "9999-12-31T23:59:59Z");
    for (const double beyond : {-63'113'904'001.0, 252'423'993'600.0, std::nan("")}) {
        EXPECT_FALSE(dated(beyond)) << beyond;
    }
}

TEST_F(FolderBundlesTest, GiveTheDataFolderItsName) {
    const std::pair<std::string, std::string> rows[] = {
        {"com.example.app", "com.example.app"}, {".", "_"}, {"..", "_"}, {"../a/b", ".._a_b"},
        {"", "executable.kivo-platform-tests"},
    };
    for (const auto& [identifier, name] : rows) {
        write("app.bundle/Info.plist",
              test::propertyList("<dict><key>CFBundleIdentifier</key><string>" + identifier + "</string></dict>"));
        setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
        EXPECT_EQ(defaultDataFolder(*main()).path(), folder / "data/kivo" / name);
        setenv("XDG_DATA_HOME", "relative", 1);
        setenv("HOME", folder.c_str(), 1);
        EXPECT_EQ(defaultDataFolder(*main()).path(), folder / ".local/share/kivo" / name);
    }
}

TEST_F(FolderBundlesTest, TellsOnceOfAnInformationDictionaryThatCannotBeRead) {
    const auto problemOf = [&] {
        diagnostics->clear();
        const auto bundle = main();
        EXPECT_EQ(bundle->bundleIdentifier(), std::nullopt);
        EXPECT_EQ(bundle->localizedString("key"), "key");
        return diagnostics->texts();
    };
    write("app.bundle/Info.plist", "broken");
    EXPECT_THAT(problemOf(), ElementsAre(HasSubstr("Info.plist\" is not a well-formed")));
    write("app.bundle/Info.plist", test::propertyList("<array/>"));
    EXPECT_THAT(problemOf(), ElementsAre(HasSubstr("Info.plist\" does not hold a dictionary")));
    fs::remove_all(folder / "app.bundle");
    write("app.bundle", "a file");
    EXPECT_THAT(problemOf(), ElementsAre(HasSubstr("app.bundle\" is not a folder")));
}

TEST(PropertyListReader, RefusesBinaryListsThatLoopOrUnfoldWithoutEnd) {
    // Arrays of one byte each for marker and two references: `next` says which array follows which.
    const auto chain = [](int objects, auto next) {
        std::string bytes = "bplist00";
        std::string offsets;
        for (int i = 0; i < objects; ++i) {
            offsets += static_cast<char>(bytes.size() >> 8);
            offsets += static_cast<char>(bytes.size());
            bytes += i + 1 < objects || next(i) != i + 1 ? "\xA2" + std::string(2, static_cast<char>(next(i))) : "\xA0";
        }
        const auto table = bytes.size();
        const std::string size(7, '\0');
        return bytes + offsets + std::string(6, '\0') + "\x02\x01" + size + static_cast<char>(objects) +
               std::string(8, '\0') + std::string(6, '\0') + static_cast<char>(table >> 8) + static_cast<char>(table);
    };
    EXPECT_TRUE(readPropertyList(chain(5, [](int i) { return i + 1; })));
    EXPECT_FALSE(readPropertyList(chain(5, [](int i) { return (i + 1) % 5; }))) << "a loop";
    EXPECT_FALSE(readPropertyList(chain(21, [](int i) { return i + 1; }))) << "two to the power of twenty values";
    EXPECT_FALSE(readPropertyList(chain(1, [](int) { return 9; }))) << "a reference to nowhere";
}

TEST(StringsFile, UnderstandsTheTextForm) {
    const std::pair<std::string, StringTable> rows[] = {
        {"", {}},
        {"\"a\" = \"b\";", {{"a", "b"}}},
        {"/* \"no\" = \"no\"; */ \"a\"=\"b\" ; // end\n\"c\" = \"d\";", {{"a", "b"}, {"c", "d"}}},
        {"\"a\" = \"b\"; \"a\" = \"c\";", {{"a", "c"}}},
        {"plain.key = \"// text\"; \"alone\";", {{"plain.key", "// text"}, {"alone", "alone"}}},
        {R"("q\"" = "1\\2\n3\t4\r\'";)", {{"q\"", "1\\2\n3\t4\r'"}}},
        {R"("a" = "\U20AC\u00e9";)", {{"a", "\xE2\x82\xAC\xC3\xA9"}}},
        {R"("a" = "\Ud83d\Ude00|\ud83d|\Ude00";)", {{"a", "\xF0\x9F\x98\x80|\xEF\xBF\xBD|\xEF\xBF\xBD"}}},
        {R"("a" = "\Uzz";)", {{"a", "Uzz"}}},
        {"\xEF\xBB\xBF\"a\" = \"\xC3\xA9\";", {{"a", "\xC3\xA9"}}},
        {{"\xFF\xFE\"\0a\0\"\0=\0\"\0\xE9\0\"\0;\0", 18}, {{"a", "\xC3\xA9"}}},
        {{"\xFE\xFF\0\"\0a\0\"\0=\0\"\0\xE9\0\"\0;", 18}, {{"a", "\xC3\xA9"}}},
        {"\n" + test::propertyList("<dict><key>a</key><string>b</string><key>n</key><true/></dict>"), {{"a", "b"}}},
        {test::binaryPropertyList(test::propertyList("<dict><key>a</key><string>b</string></dict>")), {{"a", "b"}}},
    };
    for (const auto& [bytes, table] : rows) {
        const auto result = readStringsFile(bytes);
        ASSERT_TRUE(result) << bytes << " " << result.error();
        EXPECT_EQ(*result, table) << bytes;
    }
}

TEST(StringsFile, SaysWhereTheTextFormIsBroken) {
    std::string manyTexts;
    for (int i = 0; i <= 100'000; ++i) {
        manyTexts += std::to_string(i) + ";";
    }

    const std::pair<std::string, std::string> rows[] = {
        {"\"a\" = \"b\"", "line 1: expected ';'"},
        {"\"a\" = \"b\";\n\"c\" =\n;", "line 3: expected a value"},
        {"\n= \"b\";", "line 2: expected a key"},
        {"\"a\" = \"b\n;\n", "line 1: a text has no closing quote"},
        {"\n\n/* open", "line 3: a comment has no end"},
        {manyTexts, "line 1: more than 100,000 texts"},
        {"\"a\" = \"\xE9\";", "neither UTF-8 nor UTF-16"},
        {test::propertyList("<array/>"), "does not hold a dictionary"},
    };
    for (const auto& [bytes, problem] : rows) {
        const auto result = readStringsFile(bytes);
        ASSERT_FALSE(result) << problem;
        EXPECT_THAT(result.error(), HasSubstr(problem));
    }
}

TEST_F(FolderBundlesTest, PrefersThePersonsLanguageTextByText) {
    write("app.bundle/Info.plist",
          test::propertyList("<dict><key>CFBundleDevelopmentRegion</key><string>fr</string></dict>"));
    const auto table = [](const std::string& language, const std::string& keys) {
        std::string text;
        for (const char key : keys) {
            text += std::string{"\""} + key + "\" = \"" + language + "\";\n";
        }
        return text;
    };
    write("app.bundle/de_AT.lproj/Localizable.strings", table("de_AT", "a"));
    write("app.bundle/de-AT.lproj/Localizable.strings", table("de-AT", "ab"));
    write("app.bundle/de.lproj/Localizable.strings", table("de", "abc"));
    write("app.bundle/fr.lproj/Localizable.strings", table("fr", "abcd"));
    write("app.bundle/en.lproj/Localizable.strings", table("en", "abcde"));
    write("app.bundle/Base.lproj/Localizable.strings", table("Base", "abcdef"));
    write("app.bundle/de.lproj/terms.html", "");
    write("app.bundle/en.lproj/terms.html", "");
    const auto texts = [&] {
        const auto bundle = main();
        std::string all;
        for (const auto* key : {"a", "b", "c", "d", "e", "f", "g"}) {
            all += bundle->localizedString(key) + " ";
        }
        return all;
    };
    setenv("LANG", "de_AT.UTF-8@euro", 1);
    EXPECT_EQ(texts(), "de_AT de-AT de fr en Base g ");
    EXPECT_EQ(main()->pathForResource("terms", "html"), folder / "app.bundle/de.lproj/terms.html");
    setenv("LC_MESSAGES", "C", 1);
    EXPECT_EQ(texts(), "fr fr fr fr en Base g ");
    setenv("LC_ALL", "en", 1);
    EXPECT_EQ(texts(), "en en en en en Base g ");
    setenv("LC_ALL", "../de", 1);
    EXPECT_EQ(texts(), "fr fr fr fr en Base g ");
}

TEST_F(FolderBundlesTest, LeavesOutABrokenTableAndTellsOnce) {
    setenv("LANG", "de", 1);
    write("app.bundle/de.lproj/Localizable.strings", "\"a\" = ");
    write("app.bundle/en.lproj/Localizable.strings", "\"a\" = \"A\";");
    const auto bundle = main();
    EXPECT_EQ(bundle->localizedString("a"), "A");
    EXPECT_EQ(bundle->localizedString("a"), "A");
    EXPECT_THAT(diagnostics->texts(), ElementsAre(HasSubstr("de.lproj/Localizable.strings\" is damaged in line 1")));
}

TEST_F(FolderBundlesTest, ServesManyThreadsAndTellsOnceAllTheSame) {
    write("app.bundle/Info.plist", "broken");
    write("app.bundle/en.lproj/Localizable.strings", "\"a\" = \"A\";");
    const auto bundle = main();
    std::atomic<int> right = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back(
                [&] { right += bundle->localizedString("a") == "A" && !bundle->bundleIdentifier() ? 1 : 0; });
        }
    }
    EXPECT_EQ(right, 4);
    EXPECT_EQ(diagnostics->texts().size(), 1U);
}

} // namespace
} // namespace kivo::platform
