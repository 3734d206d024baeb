#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Image.hpp>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kivo::platform {

/// A value of a property list: text, number, boolean, bytes, list or dictionary.
struct PropertyValue {
    /// Data of a property list, other than a text.
    struct Bytes {
        /// The bytes.
        std::string value;
        bool operator==(const Bytes&) const = default;
    };

    /// The values that hold other values.
    using List = std::vector<PropertyValue>;
    using Dictionary = std::map<std::string, PropertyValue>;

    /// The value, in the type that the list gives it.
    std::variant<std::string, std::int64_t, double, bool, Bytes, List, Dictionary> value;

    /// The text, or null when the value has another type. The functions below do the same for their types.
    const std::string* text() const { return std::get_if<std::string>(&value); }

    /// The value as a list; null for a value of another type.
    const List* list() const { return std::get_if<List>(&value); }

    /// The value as a dictionary; null for a value of another type.
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value); }

    /// The value as a flag; null for a value of another type.
    const bool* boolean() const { return std::get_if<bool>(&value); }

    bool operator==(const PropertyValue&) const = default;
};

/// A folder of resources with an information dictionary. Reading is safe from any thread.
class KIVO_EXPORT Bundle {
public:
    virtual ~Bundle() = default;

    /// "CFBundleIdentifier" of the information dictionary.
    virtual std::optional<std::string> bundleIdentifier() const = 0;

    /// A text of the information dictionary; absent when missing or not text.
    virtual std::optional<std::string> infoText(std::string_view key) const = 0;

    /// The path of the resource `name`.`type`; absent when the bundle has no such resource. The path of an unreadable
    /// resource is present.
    virtual std::optional<std::filesystem::path> pathForResource(std::string_view name,
                                                                 std::string_view type) const = 0;

    /// The resource `name`.plist, XML or binary; absent when missing or unreadable (a diagnostic tells which).
    virtual std::optional<PropertyValue> propertyList(std::string_view name) const = 0;

    /// The text for `key` in `table`.strings of the person's language, else of the development language, else `key`.
    virtual std::string localizedString(std::string_view key, std::string_view table = "Localizable") const = 0;

    /// The language of the bundle's texts for this person, such as "de" or "pt_BR": the first of the person's languages
    /// and the development language for which the bundle has texts. Empty when unknown.
    virtual std::string language() const { return {}; }

    /// A named colour of the asset catalogue, with its dark variant if the catalogue has one; absent when missing or
    /// malformed (a diagnostic tells which).
    virtual std::optional<Color> color(std::string_view /*name*/) const { return std::nullopt; }

    /// A named image of the asset catalogue, with its dark variant if the catalogue has one; null when missing or
    /// malformed (a diagnostic tells which).
    virtual std::shared_ptr<const Image> image(std::string_view /*name*/) const { return nullptr; }
};

/// Finds bundles.
class KIVO_EXPORT Bundles {
public:
    virtual ~Bundles() = default;

    /// The host application's own bundle; never null, but empty when the application has none.
    virtual std::shared_ptr<Bundle> main() = 0;

    /// A bundle by its identifier: the host's own, the SDK's, or that of another library, such as the document
    /// reader's; null for none.
    virtual std::shared_ptr<Bundle> withIdentifier(std::string_view identifier) = 0;
};

} // namespace kivo::platform
