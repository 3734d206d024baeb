#include "FuzzInput.hpp"
#include "platform/bundle/AssetCatalogue.hpp"
#include "support/TemporaryFolder.hpp"

#include <cmath>

namespace {

constexpr auto namesPicture = R"({"images": [{"idiom": "universal", "filename": "a.png", "scale": "2x"}]})";

bool isLength(double value) {
    return std::isfinite(value) && value >= 0;
}

} // namespace

/// An input that begins like a PNG file is the picture of a set. Every other input is the description of the sets.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto& folder = *new kivo::test::TemporaryFolder;
    const kivo::platform::AssetCatalogue catalogue{folder.path()}; // a new catalogue, because each reads a colour once
    const auto input = kivo::fuzz::textOf(data, size);
    const bool isPicture = input.starts_with('\x89');
    folder.write("A.xcassets/a.colorset/Contents.json", input);
    folder.write("A.xcassets/a.imageset/Contents.json", isPicture ? namesPicture : input);
    folder.write("A.xcassets/a.imageset/a.png", isPicture ? input : "");
    if (const auto color = catalogue.color("a"); color && *color) {
        for (const auto level : {(*color)->red, (*color)->green, (*color)->blue, (*color)->alpha}) {
            kivo::fuzz::require(level >= 0 && level <= 1);
        }
    }
    if (const auto image = catalogue.image("a"); image && *image) {
        kivo::fuzz::require(isLength((*image)->size.width) && isLength((*image)->size.height));
        kivo::fuzz::require((*image)->file.parent_path() == folder.path() / "A.xcassets/a.imageset");
    }
    return 0;
}
