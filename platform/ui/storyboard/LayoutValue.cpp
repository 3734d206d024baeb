#include "platform/ui/storyboard/LayoutValue.hpp"

#include "platform/ui/storyboard/Classes.hpp"

#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>
#include <vector>

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

/// The bundles in which a name of the layout is looked up, the host's first.
std::vector<std::shared_ptr<const Bundle>> bundlesOf(const LayoutContext& context) {
    std::vector<std::shared_ptr<const Bundle>> bundles{services().bundles->main(), context.bundle};
    if (auto library = libraryBundle()) {
        bundles.push_back(std::move(library));
    }
    return bundles;
}

} // namespace

void LayoutValue::needObject() const {
    if (content.kind() != json::Kind::object) {
        where.fail("this must be an object; write it in braces.");
    }
}

LayoutValue LayoutValue::member(std::string_view name) const {
    needObject();
    const auto* const found = content.find(name);
    if (found == nullptr) {
        where.fail("the member " + inQuotes(name) + " is missing; add it.");
    }
    return {*found, where.in(inQuotes(name)), context};
}

LayoutValue LayoutValue::orNamed() const {
    const auto* const word = content.text();
    if (word == nullptr || context.values == nullptr) {
        return *this;
    }
    const auto* const found = context.values->find(*word);
    if (found == nullptr) {
        where.fail("the storyboard has no value " + inQuotes(*word) + R"(; add it to "values".)");
    }
    return {*found, where, context};
}

std::string LayoutValue::name() const {
    const auto* const name = content.text();
    if (name == nullptr || name->empty()) {
        where.fail("this must be a text that is not empty.");
    }
    return *name;
}

bool LayoutValue::flag() const {
    const auto flag = content.boolean();
    if (!flag) {
        where.fail("this must be true or false.");
    }
    return *flag;
}

double LayoutValue::number(double least, double most) const {
    const auto named = orNamed();
    const auto value = named.content.real();
    if (!value && named.content.kind() == json::Kind::number) {
        where.fail("this number is beyond all bounds; write a smaller one.");
    }
    if (!value || *value < least || *value > most) {
        where.fail("this must be a number from " + words(least) + " to " + words(most) + ".");
    }
    return *value;
}

int LayoutValue::integer(int least, int most) const {
    const bool isBeyondAll = content.kind() == json::Kind::number && !content.real();
    if (!content.integer() && !isBeyondAll) {
        where.fail("this must be a whole number.");
    }
    return static_cast<int>(number(least, most));
}

double LayoutValue::points() const {
    return number(-furthestPoint, furthestPoint);
}

std::string LayoutValue::text() const {
    const auto* key = content.text();
    if (key == nullptr) {
        if (content.members().size() != 1 || content.find("key") == nullptr) {
            where.fail(R"(this must be a text, or {"key": "..."} for one of the string tables.)");
        }
        member("key").name();
        key = content.textOf("key");
    }
    for (const auto& bundle : bundlesOf(context)) {
        if (auto text = bundle->localizedString(*key); text != *key) {
            return text;
        }
    }
    return *key;
}

std::optional<Color> LayoutValue::color() const {
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
    if (found != common.end()) {
        return found->second;
    }
    for (const auto& bundle : bundlesOf(context)) {
        if (const auto color = bundle->color(word)) {
            return color;
        }
    }
    return std::nullopt;
}

std::shared_ptr<const Image> LayoutValue::image() const {
    const auto word = name();
    for (const auto& bundle : bundlesOf(context)) {
        if (auto image = bundle->image(word)) {
            return image;
        }
    }
    return nullptr;
}

Font LayoutValue::font() const {
    std::string family;
    double size = 0;
    bool isScaled = false;
    orNamed().eachMember([&](const std::string& name, const LayoutValue& value) {
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

Placement LayoutValue::placement() const {
    static const std::array<std::pair<std::string_view, std::optional<double> Placement::*>, 13> distances{
        {{"top", &Placement::top},
         {"left", &Placement::left},
         {"bottom", &Placement::bottom},
         {"right", &Placement::right},
         {"leading", &Placement::leading},
         {"trailing", &Placement::trailing},
         {"centerX", &Placement::centerX},
         {"centerY", &Placement::centerY},
         {"width", &Placement::width},
         {"height", &Placement::height},
         {"minimumHeight", &Placement::minimumHeight},
         {"maximumWidth", &Placement::maximumWidth},
         {"shareOfDisplay", &Placement::shareOfDisplay}}};
    Placement placement;
    eachMember([&](const std::string& name, const LayoutValue& value) {
        const auto found = std::ranges::find(distances, name, [](const auto& each) { return each.first; });
        if (name == "ignoresSafeArea") {
            placement.ignoresSafeArea = value.flag();
        } else if (name == "grows") {
            placement.grows = value.flag();
        } else if (found == distances.end()) {
            value.where.fail(
                "a placement has no such member; it has top, left, bottom, right, leading, trailing, centerX, centerY, "
                "width, height, minimumHeight, maximumWidth, shareOfDisplay, grows and ignoresSafeArea.");
        } else if (name == "shareOfDisplay") {
            placement.shareOfDisplay = value.number(0, 1);
        } else if (name == "width" || name == "height" || name.starts_with("m")) {
            placement.*found->second = value.number(0, furthestPoint);
        } else {
            placement.*found->second = value.points();
        }
    });
    return placement;
}

EdgeInsets LayoutValue::insets() const {
    EdgeInsets insets;
    if (content.kind() != json::Kind::object) {
        const auto all = points();
        return {.top = all, .left = all, .bottom = all, .right = all};
    }
    eachMember([&](const std::string& name, const LayoutValue& value) {
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
