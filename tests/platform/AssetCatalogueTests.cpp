#include "platform/bundle/AssetCatalogue.hpp"

#include "support/TemporaryFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace kivo::platform {
namespace {

class AssetCatalogueTest : public testing::Test {
protected:
    void writeColor(const std::string& components) const {
        folder_.write("Kivo.xcassets/Colours/Kivo.Button.Color.colorset/Contents.json",
                      R"({"colors": [{"idiom": "universal", "color": {"components": )" + components + "}}]}");
    }

    test::TemporaryFolder folder_;
    AssetCatalogue catalogue_{folder_.path()};
};

TEST_F(AssetCatalogueTest, TellsAMalformedColourFromAMissingOne) {
    for (const auto& components :
         std::vector<std::string>{R"({"red": "256", "green": "0", "blue": "0", "alpha": "1.0"})",
                                  R"({"green": "0", "blue": "0", "alpha": "1"})",
                                  R"({"red": "0xZZ", "green": "0", "blue": "0", "alpha": "1"})",
                                  R"({"red": 1, "green": 1, "blue": 1})", "[]"}) {
        writeColor(components);
        ASSERT_FALSE(catalogue_.color("Kivo.Button.Color")) << components;
        EXPECT_THAT(catalogue_.color("Kivo.Button.Color").error(), testing::HasSubstr("\"red\""));
    }
    EXPECT_EQ(catalogue_.color("Kivo.Other").value(), std::nullopt);
    writeColor(std::string(100'000, '['));
    EXPECT_THAT(catalogue_.color("Kivo.Button.Color").error(), testing::HasSubstr("deeper"));
    folder_.write("Kivo.xcassets/Colours/Kivo.Button.Color.colorset/Contents.json", "{");
    EXPECT_THAT(catalogue_.color("Kivo.Button.Color").error(), testing::HasSubstr("no JSON"));
}

TEST_F(AssetCatalogueTest, KeepsTheDarkVariantOfAColourAndOfAPicture) {
    const auto color = [](const char* level, const std::string& appearances) {
        return R"({"idiom": "universal", )" + appearances + R"("color": {"components": {"red": ")" + level +
               R"(", "green": "0.0", "blue": "0.0", "alpha": "1.0"}}})";
    };
    const auto is = [](const char* appearance, const char* value) {
        return std::string{R"("appearances": [{"appearance": ")"} + appearance + R"(", "value": ")" + value +
               R"("}], )";
    };
    const std::pair<std::string, Color> rows[] = {
        {color("0.2", ""), {.red = 0.2}},
        {color("0.2", "") + ", " + color("0.8", is("luminosity", "dark")), Color::adaptive({.red = 0.2}, {.red = 0.8})},
        {color("0.8", is("luminosity", "dark")) + ", " + color("0.2", ""), Color::adaptive({.red = 0.2}, {.red = 0.8})},
        {color("0.2", "") + ", " + color("0.8", is("contrast", "high")), {.red = 0.2}},
        {color("0.2", "") + ", " + color("0.8", R"("appearances": 7, )"), {.red = 0.2}},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const auto name = "Color" + std::to_string(i);
        folder_.write("Kivo.xcassets/" + name + ".colorset/Contents.json", "{\"colors\": [" + rows[i].first + "]}");
    }
    folder_.write("Kivo.xcassets/onlyDark.colorset/Contents.json",
                  "{\"colors\": [" + color("0.8", is("luminosity", "dark")) + "]}");
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(catalogue_.color("Color" + std::to_string(i)).value(), rows[i].second) << rows[i].first;
    }
    EXPECT_FALSE(catalogue_.color("onlyDark"));
}

TEST_F(AssetCatalogueTest, ShowsAPictureInItsAppearanceAndMirroredWhereItPoints) {
    const auto set = std::filesystem::path{"Kivo.xcassets/arrow.imageset"};
    for (const auto* file : {"day.png", "night.png"}) {
        folder_.write(set / file, "");
    }
    folder_.write(set / "Contents.json", R"({"images": [
        {"idiom": "universal", "filename": "day.png", "language-direction": "left-to-right"},
        {"idiom": "universal", "filename": "night.png", "appearances": [{"appearance": "luminosity", "value": "dark"}]}]})");
    const auto image = catalogue_.image("arrow").value();
    EXPECT_TRUE(image->isDirectional);
    EXPECT_EQ(image->fileIn(UserInterfaceStyle::light).filename(), "day.png");
    EXPECT_EQ(image->fileIn(UserInterfaceStyle::dark).filename(), "night.png");
}

TEST_F(AssetCatalogueTest, PicksTheFinestPictureAndItsSizeInPoints) {
    std::string header{"\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\x30\0\0\0\x18", 24};
    const auto set = std::filesystem::path{"Icons.xcassets/close-icon.imageset"};
    folder_.write(set / "close@2x.png", header);
    folder_.write(set / "close.png", "no picture");
    folder_.write(set / "Contents.json", R"({"images": [{"idiom": "universal", "filename": "close.png", "scale": "1x"},
        {"idiom": "universal", "filename": "close@2x.png", "scale": "2x"}, {"idiom": "universal", "scale": "3x"}]})");
    const auto image = catalogue_.image("close-icon");
    ASSERT_TRUE(image && *image);
    EXPECT_EQ((*image)->file, folder_.path() / set / "close@2x.png");
    EXPECT_EQ((*image)->size, (Size{24, 12}));

    header[20] = '\x80';
    folder_.write(set / "broken.png", header);
    folder_.write(set / "flat.png", header.replace(20, 4, 4, '\0'));
    folder_.write("Icons.xcassets/outside.png", header);
    const auto entry = [](const std::string& file) {
        return R"({"images": [{"idiom": "universal", "filename": ")" + file + "\"}]}";
    };
    const std::pair<std::string, const char*> rows[] = {
        {entry("broken.png"), "impossible width or height"},
        {entry("flat.png"), "impossible width or height"},
        {entry("../outside.png"), "not in its folder"},
        {entry("missing.png"), "not in its folder"},
        {entry(""), "no universal image"},
        {R"({"images": [{"idiom": "universal", "filename": "close.png", "appearances": []}]})", "no universal image"},
        {R"({"images": {}})", "no list \"images\""},
        {"[]", "no JSON with an object"},
    };
    for (const auto& [contents, problem] : rows) {
        folder_.write(set / "Contents.json", contents);
        ASSERT_FALSE(catalogue_.image("close-icon")) << contents;
        EXPECT_THAT(catalogue_.image("close-icon").error(), testing::HasSubstr(problem));
    }
    std::filesystem::remove(folder_.path() / set / "Contents.json");
    EXPECT_THAT(catalogue_.image("close-icon").error(), testing::HasSubstr("does not exist"));
}

} // namespace
} // namespace kivo::platform
