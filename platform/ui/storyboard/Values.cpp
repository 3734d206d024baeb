#include "platform/ui/storyboard/Values.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace kivo::platform::storyboard {
namespace {

constexpr double furthestPoint = 10'000;
constexpr double largestFont = 500;

std::optional<Color> hexColor(std::string_view digits) {
    std::uint32_t value = 0;
    const auto* const begin = digits.begin();
    const auto read = std::from_chars(begin, digits.end(), value, 16);
    if ((digits.size() != 6 && digits.size() != 8) || read.ec != std::errc{} || read.ptr != digits.end()) {
        return std::nullopt;
    }
    if (digits.size() == 6) {
        value = value << 8 | 0xFF;
    }
    const auto channel = [value](int shift) { return static_cast<double>(value >> shift & 0xFF) / 255; };
    return Color{.red = channel(24), .green = channel(16), .blue = channel(8), .alpha = channel(0)};
}

/// The shortest way to write the number.
std::string words(double number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    return {digits.begin(), end};
}

} // namespace

void Value::needObject() const {
    if (content.kind() != json::Kind::object) {
        where.fail("this must be an object; write it in braces.");
    }
}

Value Value::member(std::string_view name) const {
    needObject();
    const auto* const found = content.find(name);
    if (found == nullptr) {
        where.fail("the member " + inQuotes(name) + " is missing; add it.");
    }
    return {*found, where.in(inQuotes(name)), bundle};
}

std::string Value::name() const {
    const auto* const name = content.text();
    if (name == nullptr || name->empty()) {
        where.fail("this must be a text that is not empty.");
    }
    return *name;
}

bool Value::flag() const {
    const auto flag = content.boolean();
    if (!flag) {
        where.fail("this must be true or false.");
    }
    return *flag;
}

double Value::number(double least, double most) const {
    const auto value = content.real();
    if (!value && content.kind() == json::Kind::number) {
        where.fail("this number is beyond all bounds; write a smaller one.");
    }
    if (!value || *value < least || *value > most) {
        where.fail("this must be a number from " + words(least) + " to " + words(most) + ".");
    }
    return *value;
}

int Value::integer(int least, int most) const {
    const bool isBeyondAll = content.kind() == json::Kind::number && !content.real();
    if (!content.integer() && !isBeyondAll) {
        where.fail("this must be a whole number.");
    }
    return static_cast<int>(number(least, most));
}

double Value::points() const {
    return number(-furthestPoint, furthestPoint);
}

std::string Value::text() const {
    if (const auto* const text = content.text()) {
        return *text;
    }
    if (content.members().size() != 1 || content.find("key") == nullptr) {
        where.fail(R"(this must be a text, or {"key": "..."} for one of the bundle's string table.)");
    }
    return bundle.localizedString(member("key").name());
}

std::optional<Color> Value::color() const {
    const auto word = name();
    if (word.starts_with('#')) {
        const auto color = hexColor(std::string_view{word}.substr(1));
        if (!color) {
            where.fail(inQuotes(word) + " is no colour; write #RRGGBB or #RRGGBBAA.");
        }
        return color;
    }
    static const std::array<std::pair<std::string_view, Color>, 4> common{{{"white", Color::white()},
                                                                           {"black", Color::black()},
                                                                           {"clear", Color::clear()},
                                                                           {"systemBlue", Color::systemBlue()}}};
    const auto found = std::ranges::find(common, word, &std::pair<std::string_view, Color>::first);
    return found != common.end() ? std::optional{found->second} : bundle.color(word);
}

Font Value::font() const {
    std::string family;
    double size = 0;
    bool isScaled = false;
    eachMember([&](const std::string& name, const Value& value) {
        if (name == "name") {
            family = value.name();
        } else if (name == "size") {
            size = value.number(1, largestFont);
        } else if (name == "scaled") {
            isScaled = value.flag();
        } else {
            value.where.fail(R"(a font has no such member; it has "name", "size" and "scaled".)");
        }
    });
    if (size == 0) {
        where.fail(R"(the member "size" is missing; add it.)");
    }
    auto font = family.empty() ? Font::system(size) : Font::named(family, size).value_or(Font::system(size));
    font.isScaled = isScaled;
    return font;
}

Placement Value::placement() const {
    static const std::array<std::pair<std::string_view, std::optional<double> Placement::*>, 9> distances{
        {{"top", &Placement::top},
         {"left", &Placement::left},
         {"bottom", &Placement::bottom},
         {"right", &Placement::right},
         {"centerX", &Placement::centerX},
         {"centerY", &Placement::centerY},
         {"width", &Placement::width},
         {"height", &Placement::height},
         {"minimumHeight", &Placement::minimumHeight}}};
    Placement placement;
    eachMember([&](const std::string& name, const Value& value) {
        const auto found = std::ranges::find(distances, name, [](const auto& each) { return each.first; });
        if (name == "ignoresSafeArea") {
            placement.ignoresSafeArea = value.flag();
        } else if (found == distances.end()) {
            value.where.fail(
                "a placement has no such member; it has top, left, bottom, right, centerX, centerY, width, "
                "height, minimumHeight and ignoresSafeArea.");
        } else if (name == "width" || name == "height" || name == "minimumHeight") {
            placement.*found->second = value.number(0, furthestPoint);
        } else {
            placement.*found->second = value.points();
        }
    });
    return placement;
}

EdgeInsets Value::insets() const {
    EdgeInsets insets;
    if (content.kind() == json::Kind::number) {
        const auto all = points();
        return {.top = all, .left = all, .bottom = all, .right = all};
    }
    eachMember([&](const std::string& name, const Value& value) {
        auto* const edge = name == "top"      ? &insets.top
                           : name == "left"   ? &insets.left
                           : name == "bottom" ? &insets.bottom
                           : name == "right"  ? &insets.right
                                              : nullptr;
        if (!edge) {
            value.where.fail("margins have no such member; they have top, left, bottom and right.");
        }
        *edge = value.points();
    });
    return insets;
}

} // namespace kivo::platform::storyboard
