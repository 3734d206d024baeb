#pragma once

#include "platform/json/Json.hpp"

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/Placement.hpp>

#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::platform::storyboard {

/// A fault of a storyboard, in one sentence for the person who lays out screens. Caught by `Storyboard`.
class LayoutError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A place in a storyboard, in words: file, scene, view and member.
class Where {
public:
    explicit Where(std::string file)
        : words_{std::move(file)} {}

    /// A place inside this one.
    Where in(std::string_view part) const { return Where{words_ + ", " + std::string{part}}; }

    [[noreturn]] void fail(std::string_view problem) const { throw LayoutError{words_ + ": " + std::string{problem}}; }

private:
    std::string words_;
};

inline std::string inQuotes(std::string_view text) {
    return std::string{"\""}.append(text).append("\"");
}

/// What a layout is read with: the bundle of the file, and the file's own named values and styles.
struct LayoutContext {
    std::shared_ptr<const Bundle> bundle;
    /// The root's members of these names; null without them.
    const json::Value* values = nullptr;
    const json::Value* styles = nullptr;
};

/// A value of the file, with its place and the context in which names are looked up. Every function that reads the
/// value throws a `LayoutError` when the value does not fit.
struct LayoutValue {
    const json::Value& content;
    Where where;
    const LayoutContext& context;

    /// The member of that name; fails when it is missing.
    LayoutValue member(std::string_view name) const;

    /// Calls `take(name, value)` for each member; fails when this is no object.
    template <class Take>
    void eachMember(const Take& take) const {
        needObject();
        for (const auto& [name, member] : content.members()) {
            take(name, LayoutValue{member, where.in(inQuotes(name)), context});
        }
    }

    /// This value, or the one of the file's named values that its text names. Fails for an unknown name.
    LayoutValue orNamed() const;

    void needObject() const;

    std::string name() const;
    bool flag() const;
    double number(double least, double most) const;
    int integer(int least, int most) const;

    /// A length or distance in points.
    double points() const;

    /// A text, which is the key of its translation, or `{"key": "..."}`. The table of the host's main bundle comes
    /// first, then those of the layout's bundle and of the library; a text without a translation is shown as it is.
    std::string text() const;

    /// "#RRGGBB", "#RRGGBBAA", a common colour, or the name of a colour in the asset catalogues of the same bundles;
    /// absent when all lack the colour.
    std::optional<Color> color() const;

    /// The image of that name in the same catalogues; null when all lack the image.
    std::shared_ptr<const Image> image() const;

    /// `{"name": "...", "size": 17, "scaled": true}`, or the name of such a value; the system's font where the named
    /// font is not installed.
    Font font() const;

    Placement placement() const;
    EdgeInsets insets() const;

    /// One of `words`, as the value that the word stands for.
    template <class T>
    T choice(std::initializer_list<std::pair<std::string_view, T>> words) const {
        const auto word = name();
        std::string known;
        for (const auto& [each, meaning] : words) {
            if (each == word) {
                return meaning;
            }
            known += (known.empty() ? "" : ", ") + inQuotes(each);
        }
        where.fail("there is no " + inQuotes(word) + "; use one of " + known + ".");
    }
};

} // namespace kivo::platform::storyboard
