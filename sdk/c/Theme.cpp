#include "c/Sessions.hpp"
#include "c/ThemeProperties.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/c/theme.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <variant>

namespace {

using namespace kivo;
using platform::Color;
using platform::Font;

constexpr auto noNumber = std::numeric_limits<double>::quiet_NaN();

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};

template <class Value, class... Others>
concept OneOf = (std::is_same_v<Value, Others> || ...);

template <class Value>
concept Text = OneOf<Value, std::string, std::optional<std::string>>;
template <class Value>
concept Colored = OneOf<Value, Color, std::optional<Color>>;
template <class Value>
concept Written = OneOf<Value, Font, std::optional<Font>>;
template <class Value>
concept Enumerated = std::is_enum_v<Value>;

const c::ThemeProperty* found(std::string_view name) {
    const auto all = c::themeProperties();
    const auto row = std::ranges::find(all, name, &c::ThemeProperty::name);
    return row == all.end() ? nullptr : &*row;
}

/// The place of a property in the session's theme, and what keeps the theme alive.
struct Found {
    std::shared_ptr<ThemeCustomization> theme;
    c::Place place;
};

Found placeOf(const kivo_session* session, kivo_text name) {
    auto theme = c::notNull(c::sessionOf(session)->sdkTheme(), "the theme");
    const auto* const property = found(c::viewOf(name, "name"));
    if (property == nullptr) {
        throw c::Misuse{"the theme has no property of that name"};
    }
    const auto place = property->placeIn(*theme);
    return {std::move(theme), place};
}

[[noreturn]] void refuse(const char* wanted) {
    throw c::Misuse{std::string{"the property is no "} + wanted};
}

int wholeNumber(double value, double least, double most) {
    const bool isInRange = value >= least && value <= most; // false for NaN
    if (!isInRange || value != std::trunc(value)) {
        throw c::Misuse{"the property cannot have this number"};
    }
    return static_cast<int>(value);
}

void setNumber(const c::Place& place, double value) {
    if (!std::isfinite(value)) {
        throw c::Misuse{"value is no finite number"};
    }
    std::visit(Overloaded{[&](bool* flag) { *flag = wholeNumber(value, 0, 1) != 0; },
                          [&](int* count) { *count = wholeNumber(value, 0, std::numeric_limits<int>::max()); },
                          [&](double* length) { *length = value; },
                          [&](std::optional<double>* length) { *length = value; },
                          [&]<Enumerated E>(E* enumerator) {
                              *enumerator = static_cast<E>(wholeNumber(value, RawValues<E>::first, RawValues<E>::last));
                          },
                          [](auto*) { refuse("number"); }},
               place);
}

double numberAt(const c::Place& place) {
    return std::visit(
        Overloaded{[](const std::optional<double>* length) { return length->value_or(noNumber); },
                   [](const bool* flag) { return *flag ? 1.0 : 0.0; },
                   [](const int* count) { return static_cast<double>(*count); },
                   [](const double* length) { return *length; },
                   []<Enumerated E>(const E* enumerator) { return static_cast<double>(rawValue(*enumerator)); },
                   [](const auto*) -> double { refuse("number"); }},
        place);
}

kivo_property_kind kindOf(const c::Place& place) {
    return std::visit(
        Overloaded{[]<Text T>(T*) { return KIVO_PROPERTY_TEXT; }, []<Colored T>(T*) { return KIVO_PROPERTY_COLOR; },
                   []<Written T>(T*) { return KIVO_PROPERTY_FONT; }, [](auto*) { return KIVO_PROPERTY_NUMBER; }},
        place);
}

/// The typeface that a host names.
Font fontOf(std::string_view typeface, double pointSize) {
    if (!std::isfinite(pointSize) || pointSize <= 0) {
        throw c::Misuse{"point_size is no size"};
    }
    if (typeface.empty()) {
        return Font::system(pointSize);
    }
    const auto named = Font::named(typeface, pointSize);
    if (!named) {
        throw std::runtime_error{"no font of that name is installed"};
    }
    return *named;
}

} // namespace

extern "C" {

kivo_text kivo_theme_property(size_t index) {
    const auto all = c::themeProperties();
    return c::textOf(index < all.size() ? all[index].name : "");
}

kivo_property_kind kivo_theme_property_kind(kivo_text name) {
    return c::resultOf(__func__, KIVO_PROPERTY_UNKNOWN, [&] {
        const auto* const property = found(c::viewOf(name, "name"));
        ThemeCustomization defaults;
        return property != nullptr ? kindOf(property->placeIn(defaults)) : KIVO_PROPERTY_UNKNOWN;
    });
}

kivo_status kivo_theme_set_text(kivo_session* session, kivo_text name, kivo_text value) {
    return c::statusOf(__func__, [&] {
        const auto at = placeOf(session, name);
        auto text = c::stringOf(value, "value");
        std::visit(Overloaded{[&]<Text T>(T* place) { *place = std::move(text); }, [](auto*) { refuse("text"); }},
                   at.place);
    });
}

kivo_string* kivo_theme_text(kivo_session* session, kivo_text name) {
    return c::resultOf(__func__, static_cast<kivo_string*>(nullptr), [&] {
        const auto at = placeOf(session, name);
        return c::handOver(
            std::visit(Overloaded{[](const std::string* text) { return *text; },
                                  [](const std::optional<std::string>* text) { return text->value_or(""); },
                                  [](const auto*) -> std::string { refuse("text"); }},
                       at.place));
    });
}

kivo_status kivo_theme_set_number(kivo_session* session, kivo_text name, double value) {
    return c::statusOf(__func__, [&] { setNumber(placeOf(session, name).place, value); });
}

double kivo_theme_number(kivo_session* session, kivo_text name) {
    return c::resultOf(__func__, noNumber, [&] { return numberAt(placeOf(session, name).place); });
}

kivo_status kivo_theme_set_color(kivo_session* session, kivo_text name, kivo_color value) {
    return c::statusOf(__func__, [&] {
        const auto at = placeOf(session, name);
        for (const auto channel : {value.red, value.green, value.blue, value.alpha}) {
            const bool isChannel = channel >= 0 && channel <= 1; // false for NaN
            if (!isChannel) {
                throw c::Misuse{"a channel of value is not from 0 to 1"};
            }
        }
        const Color color{value.red, value.green, value.blue, value.alpha};
        std::visit(Overloaded{[&]<Colored T>(T* place) { *place = color; }, [](auto*) { refuse("colour"); }}, at.place);
    });
}

kivo_color kivo_theme_color(kivo_session* session, kivo_text name) {
    return c::resultOf(__func__, kivo_color{}, [&] {
        const auto at = placeOf(session, name);
        const auto color =
            std::visit(Overloaded{[](const Color* set) { return *set; },
                                  [](const std::optional<Color>* set) { return set->value_or(Color::clear()); },
                                  [](const auto*) -> Color { refuse("colour"); }},
                       at.place);
        return kivo_color{color.red, color.green, color.blue, color.alpha};
    });
}

kivo_status kivo_theme_set_font(kivo_session* session, kivo_text name, kivo_text typeface, double point_size) {
    return c::statusOf(__func__, [&] {
        const auto at = placeOf(session, name);
        const auto font = fontOf(c::viewOf(typeface, "typeface"), point_size);
        std::visit(Overloaded{[&]<Written T>(T* place) { *place = font; }, [](auto*) { refuse("font"); }}, at.place);
    });
}

kivo_string* kivo_theme_font(kivo_session* session, kivo_text name, double* point_size) {
    return c::resultOf(__func__, static_cast<kivo_string*>(nullptr), [&] {
        const auto at = placeOf(session, name);
        const auto font =
            std::visit(Overloaded{[](const Font* set) { return *set; },
                                  [](const std::optional<Font>* set) { return set->value_or(Font{.pointSize = 0}); },
                                  [](const auto*) -> Font { refuse("font"); }},
                       at.place);
        if (point_size != nullptr) {
            *point_size = font.pointSize;
        }
        return c::handOver(font.name);
    });
}
}
