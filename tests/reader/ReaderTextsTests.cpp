#include "ReaderScreensFixture.hpp"

#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/Text.hpp>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

namespace kivo::test {
namespace {

using testing::UnorderedElementsAre;

class ReaderTexts : public ReaderScreensFixture {
protected:
    void TearDown() override { unsetenv("LC_ALL"); }

    static std::shared_ptr<platform::Bundle> bundleIn(const char* locale) {
        setenv("LC_ALL", locale, /*overwrite=*/1);
        platform::Services services;
        services.bundles = platform::linuxServices().bundles;
        platform::install(services);
        return services.bundles->withIdentifier("com.test.KivoReader");
    }
};

TEST_F(ReaderTexts, AreTranslatedIntoEveryLanguageAndNotMuchLonger) {
    const auto folder = bundleIn("C")->pathForResource("Info", "plist")->parent_path();
    std::vector<std::string> languages;
    for (const auto& entry : std::filesystem::directory_iterator{folder}) {
        if (entry.path().extension() != ".lproj") {
            continue;
        }
        languages.push_back(entry.path().stem());
        std::ifstream file{entry.path() / "Localizable.strings"};
        std::set<std::string> keys;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with('"')) {
                EXPECT_TRUE(keys.insert(line.substr(1, line.find("\" = \"") - 1)).second) << line << " comes twice";
            }
        }
        EXPECT_EQ(keys, (std::set<std::string>{reader::screenTexts.begin(), reader::screenTexts.end()}))
            << languages.back();
        const auto bundle = bundleIn(languages.back().c_str());
        for (const auto key : reader::screenTexts) {
            const auto length = text::characterCount(bundle->localizedString(key));
            EXPECT_GT(length, 0U) << languages.back() << ": " << key;
            EXPECT_LE(length, text::characterCount(key) * 3 / 2 + 18) << languages.back() << ": " << key;
        }
    }
    EXPECT_THAT(languages, UnorderedElementsAre("ar", "de", "en", "es", "fr", "ja", "pl"));
}

TEST_F(ReaderTexts, AreShownInThePersonsLanguage) {
    const struct {
        const char* locale;
        const char* number;
        const char* birth;
        const char* percent;
    } rows[] = {
        {"de_AT.UTF-8", "Dokumentnummer", "12.08.1974", "25\u00A0%"},
        {"ja_JP.UTF-8", "書類番号", "1974/08/12", "25%"},
        {"nl_NL.UTF-8", "Document number", "12.08.1974", "25%"},
    };

    flow.shouldShowVIZResult = true;
    for (const auto& row : rows) {
        bundleIn(row.locale);
        begin();
        readPage();
        EXPECT_TRUE(sees(row.number)) << person.screenInWords();
        EXPECT_TRUE(sees(row.birth)) << person.screenInWords();
        tap("pageResultContinue");
        chip->tell({.step = reader::ChipProgress::Step::reading, .bytesRead = 50, .bytesInAll = 200});
        EXPECT_TRUE(sees(row.percent)) << person.screenInWords();
        tap("readerClose");
        showToCamera(table);
        settle();
    }
}

} // namespace
} // namespace kivo::test
