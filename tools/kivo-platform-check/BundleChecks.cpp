#include "Trial.hpp"

namespace kivo::check {
namespace {

using platform::Bundle;
using platform::PropertyValue;

std::string propertyList(const std::string& root) {
    return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + root + "</plist>";
}

std::shared_ptr<Bundle> mainBundleOf(const Trial& trial) {
    return required(trial.services().bundles).main();
}

void answersFromInfo(Trial& trial) {
    trial.write("app.bundle/Info.plist",
                propertyList("<dict><key>CFBundleIdentifier</key><string>com.example.app</string>"
                             "<key>Count</key><integer>3</integer></dict>"));
    const auto bundle = mainBundleOf(trial);
    trial.expectEqual("the identifier", required(bundle).bundleIdentifier(), "com.example.app");
    trial.expectEqual("a text", bundle->infoText("CFBundleIdentifier"), "com.example.app");
    trial.expectEqual("a number asked for as text", bundle->infoText("Count"), std::optional<std::string>{});
    trial.expectEqual("a missing text", bundle->infoText("Other"), std::optional<std::string>{});
}

void mayBeMissing(Trial& trial) {
    const auto services = trial.services();
    const auto bundle = required(services.bundles).main();
    trial.expectEqual("an identifier", required(bundle).bundleIdentifier(), std::optional<std::string>{});
    trial.expect(!bundle->pathForResource("a", "txt"), "no resource");
    trial.expect(!bundle->propertyList("a"), "no property list");
    trial.expect(!bundle->color("a") && !bundle->image("a"), "no colour and no image");
    trial.expectEqual("a text", bundle->localizedString("key"), "key");
    trial.expect(services.bundles->withIdentifier("no.such.bundle") == nullptr, "no bundle of a strange name");
}

void findsResources(Trial& trial) {
    trial.write("secret.plist", propertyList("<dict/>"));
    trial.write("secret.strings", "\"key\" = \"stolen\";");
    const auto logo = trial.write("app.bundle/logo.png", "");
    const auto plain = trial.write("app.bundle/README", "");
    const auto help = trial.write("app.bundle/en.lproj/help.html", "");
    const auto bundle = mainBundleOf(trial);
    required(bundle);
    trial.expectEqual("a picture", bundle->pathForResource("logo", "png"), std::optional{logo});
    trial.expectEqual("a file without a type", bundle->pathForResource("README", ""), std::optional{plain});
    trial.expectEqual("a page in a language", bundle->pathForResource("help", "html"), std::optional{help});
    for (const std::string name :
         {"../secret", "../../secret", "en.lproj/help", "/etc/passwd", "..", ".", "", "missing"}) {
        for (const auto* type : {"plist", "html"}) {
            trial.expect(!bundle->pathForResource(name, type), "no resource " + shown(name) + " of type " + type);
        }
        trial.expect(!bundle->propertyList(name), "no property list " + shown(name));
        trial.expectEqual("a text of table " + shown(name), bundle->localizedString("key", name), "key");
    }
    trial.expect(!bundle->pathForResource(std::string_view{"logo.png\0x", 10}, ""), "no resource behind a zero");
}

void readsPropertyLists(Trial& trial) {
    const auto text =
        propertyList("<dict><key>text</key><string>a &lt; \xE2\x82\xAC</string><key>number</key><integer>-5</integer>"
                     "<key>real</key><real>1.5</real><key>flag</key><true/><key>bytes</key><data>AA EC\nAw==</data>"
                     "<key>list</key><array><string>x</string><dict/></array>"
                     "<key>date</key><date>2026-01-31T08:15:00Z</date></dict>");
    // {"a": "b"} in the binary form.
    const std::string binary{"bplist00\xD1\x01\x02Qa"
                             "Qb\x08\x0B\x0D\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x03\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x0F",
                             8 + 3 + 2 + 2 + 3 + 32};
    trial.write("app.bundle/all.plist", text);
    trial.write("app.bundle/binary.plist", binary);
    trial.write("app.bundle/broken.plist", "<plist><dict><key>a</key>");
    const auto bundle = mainBundleOf(trial);
    const PropertyValue::Dictionary expected{
        {"text", {std::string{"a < \xE2\x82\xAC"}}},
        {"number", {std::int64_t{-5}}},
        {"real", {1.5}},
        {"flag", {true}},
        {"bytes", {PropertyValue::Bytes{{"\0\1\2\3", 4}}}},
        {"list", {PropertyValue::List{{std::string{"x"}}, {PropertyValue::Dictionary{}}}}},
        {"date", {std::string{"2026-01-31T08:15:00Z"}}},
    };
    const auto all = required(bundle).propertyList("all");
    trial.expect(all && all->dictionary() != nullptr && !all->text() && !all->list(), "a dictionary and nothing else");
    for (const auto& [key, value] : expected) {
        const auto* const members = all ? all->dictionary() : nullptr;
        const auto found = members ? members->find(key) : expected.end();
        trial.expect(members && found != members->end() && found->second == value, "the value of " + key);
    }
    const PropertyValue flag{true};
    trial.expect(flag.boolean() != nullptr && *flag.boolean() && !flag.text(), "a boolean and nothing else");
    trial.expect(bundle->propertyList("binary") == PropertyValue{PropertyValue::Dictionary{{"a", {std::string{"b"}}}}},
                 "the dictionary of the binary form");
    trial.expect(!bundle->propertyList("broken"), "no value of a broken list");
}

void translates(Trial& trial) {
    trial.write("app.bundle/Info.plist",
                propertyList("<dict><key>CFBundleDevelopmentRegion</key><string>tlh</string></dict>"));
    trial.write("app.bundle/tlh.lproj/Localizable.strings",
                "/* two */ \"a\" = \"A \\\"\xC3\xA9\\\"\\n\";\n\"b\" = \"\";");
    trial.write("app.bundle/tlh.lproj/Other.strings", "\"a\" = \"other\";");
    trial.write("app.bundle/tlh.lproj/Broken.strings", "\"a\" = ");
    const auto bundle = mainBundleOf(trial);
    trial.expectEqual("a text", required(bundle).localizedString("a"), "A \"\xC3\xA9\"\n");
    trial.expectEqual("a text of another table", bundle->localizedString("a", "Other"), "other");
    trial.expectEqual("a text of a broken table", bundle->localizedString("a", "Broken"), "a");
    trial.expectEqual("a text of a missing table", bundle->localizedString("a", "Absent"), "a");
    trial.expectEqual("a missing text", bundle->localizedString("c"), "c");
}

void readsColoursAndImages(Trial& trial) {
    const auto colour = [&](const std::string& name, const std::string& components) {
        trial.write(
            "app.bundle/Check.xcassets/" + name + ".colorset/Contents.json",
            R"({"colors": [{"idiom": "universal", "appearances": [{"appearance": "luminosity", "value": "dark"}],
                     "color": {"components": {"red": "1.0", "green": "1.0", "blue": "1.0", "alpha": "1.0"}}},
                     {"idiom": "universal", "color": {"color-space": "srgb", "components": )" +
                components + "}}]}");
    };
    colour("Paint", R"({"red": "0x80", "green": "51", "blue": "0.25", "alpha": "0.500"})");
    colour("Broken", R"({"red": "256", "green": "0", "blue": "0", "alpha": "1"})");
    const auto picture = trial.write("app.bundle/Check.xcassets/icon.imageset/icon@2x.png",
                                     {"\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\x30\0\0\0\x18", 24});
    trial.write("app.bundle/Check.xcassets/icon.imageset/Contents.json",
                R"({"images": [{"idiom": "universal", "filename": "icon@2x.png", "scale": "2x"}]})");
    trial.write("app.bundle/Check.xcassets/stolen.imageset/Contents.json",
                R"({"images": [{"idiom": "universal", "filename": "../../../secret.png"}]})");
    trial.write("secret.png", "");
    const auto bundle = mainBundleOf(trial);
    const auto paint = required(bundle).color("Paint");
    trial.expect(paint == platform::Color::adaptive({128.0 / 255, 0.2, 0.25, 0.5}, platform::Color::white()),
                 "the colour in its light and in its dark variant");
    trial.expect(!bundle->color("Broken") && !bundle->color("Missing"), "no colour that is malformed or missing");
    const auto image = bundle->image("icon");
    trial.expect(image && image->file == picture, "the picture's file");
    trial.expect(image && image->size.width == 24 && image->size.height == 12, "the picture's size in points");
    trial.expect(!bundle->image("stolen") && !bundle->image("Missing"), "no picture outside of the bundle");
}

} // namespace

Checks bundleChecks() {
    const auto* const seam = "Bundle";
    return {
        {seam, "answers from the information dictionary", answersFromInfo},
        {seam, "is empty where the application has none", mayBeMissing},
        {seam, "finds its resources and no file outside of it", findsResources},
        {seam, "reads every type of a property list, XML and binary", readsPropertyLists},
        {seam, "gives texts of the development language, else the key", translates},
        {seam, "reads colours and images of the asset catalogue", readsColoursAndImages},
    };
}

} // namespace kivo::check
