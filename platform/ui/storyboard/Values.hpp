#pragma once

#include "platform/json/Json.hpp"
#include "platform/ui/storyboard/LayoutError.hpp"

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/Placement.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::platform::storyboard {

/// One value of the file, with its place and the bundle in which it looks up names. Every reader fails with a
/// `LayoutError`.
struct Value {
    const json::Value& content;
    Where where;
    const Bundle& bundle;

    /// The member of that name; fails when it is missing.
    Value member(std::string_view name) const;

    /// Calls `take(name, value)` for each member; fails when this is no object.
    template <class Take>
    void eachMember(const Take& take) const {
        needObject();
        for (const auto& [name, member] : content.members()) {
            take(name, Value{member, where.in(inQuotes(name)), bundle});
        }
    }

    void needObject() const;

    std::string name() const;
    bool flag() const;
    double number(double least, double most) const;
    int integer(int least, int most) const;

    /// A length or distance in points.
    double points() const;

    /// A text, or `{"key": "..."}` for one of the bundle's string table.
    std::string text() const;

    /// "#RRGGBB", "#RRGGBBAA", a common colour, or the name of one in the catalogue; absent when the catalogue lacks
    /// it.
    std::optional<Color> color() const;

    /// `{"name": "...", "size": 17, "scaled": true}`; the system's font where the named one is not installed.
    Font font() const;

    Placement placement() const;
    EdgeInsets insets() const;

    /// One of a few words, each with what it stands for.
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
