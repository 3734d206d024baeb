#include "c/Display.hpp"
#include "platform/json/Json.hpp"

#include <kivo/platform/ui/Accessibility.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/PreviewView.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kivo::c {
namespace {

using namespace platform;
using json::Object;
using json::Value;

Value written(const Color& color) {
    std::string text = "#";
    for (const auto channel : {color.red, color.green, color.blue, color.alpha}) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x",
                      static_cast<unsigned>(std::lround(std::clamp(channel, 0.0, 1.0) * 255)));
        text += digits;
    }
    return text;
}

Value written(const Rect& frame) {
    const auto rounded = [](double length) { return std::round(length * 1000) / 1000; };
    return std::vector<Value>{rounded(frame.left()), rounded(frame.top()), rounded(frame.size.width),
                              rounded(frame.size.height)};
}

void setColor(Object& to, const char* name, const std::optional<Color>& color, const View& view) {
    if (color) {
        to.set(name, written(color->in(view.userInterfaceStyle())));
    }
}

void setText(Object& to, const char* name, const std::string& text) {
    if (!text.empty()) {
        to.set(name, text);
    }
}

void setImage(Object& to, const std::shared_ptr<const Image>& image, const View& view) {
    if (image) {
        to.set("image", Value::object({{"name", image->name},
                                       {"file", image->fileIn(view.userInterfaceStyle()).string()},
                                       {"template", image->isTemplate}}));
    }
}

const char* nameOf(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::center:
        return "center";
    case TextAlignment::right:
        return "right";
    case TextAlignment::natural:
    case TextAlignment::left:
        break;
    }
    return "left";
}

const char* nameOf(KeyboardType type) {
    switch (type) {
    case KeyboardType::asciiCapable:
        return "ascii";
    case KeyboardType::numberPad:
        return "number";
    case KeyboardType::namePhonePad:
        return "name";
    case KeyboardType::standard:
        break;
    }
    return "standard";
}

/// Adds the members of one class of views. Returns the kind's name.
const char* describe(Object& to, const TextField& field) {
    setText(to, "value", field.text());
    setText(to, "placeholder", field.placeholder());
    to.set("enabled", field.isEnabled());
    to.set("focused", field.isFirstResponder());
    to.set("keyboard", nameOf(field.keyboardType()));
    return "field";
}

const char* describe(Object& to, const Button& button) {
    to.set("enabled", button.isEnabled());
    setImage(to, button.image() ? button.image() : button.backgroundImage(), button);
    return "button";
}

const char* kindOf(Object& to, View& view) {
    if (const auto* const field = dynamic_cast<TextField*>(&view)) {
        return describe(to, *field);
    }
    if (const auto* const button = dynamic_cast<Button*>(&view)) {
        return describe(to, *button);
    }
    if (const auto* const image = dynamic_cast<ImageView*>(&view)) {
        setImage(to, image->image(), view);
        return "image";
    }
    if (const auto* const wheel = dynamic_cast<ActivityIndicatorView*>(&view)) {
        to.set("animating", wheel->isAnimating());
        setColor(to, "color", wheel->color(), view);
        return "progress";
    }
    if (dynamic_cast<PreviewView*>(&view) != nullptr) {
        return "camera";
    }
    if (dynamic_cast<ScrollView*>(&view) != nullptr) {
        return "scroll";
    }
    return dynamic_cast<Label*>(&view) != nullptr ? "label" : "view";
}

void describeLooks(Object& to, View& view) {
    const auto& layer = view.layer();
    if (view.alpha() < 1) {
        to.set("alpha", view.alpha());
    }
    setColor(to, "background", view.backgroundColor(), view);
    setColor(to, "tint", view.tintColor(), view);
    if (layer.cornerRadius > 0) {
        to.set("corner_radius", layer.cornerRadius);
    }
    if (layer.borderWidth > 0) {
        to.set("border_width", layer.borderWidth);
        setColor(to, "border_color", layer.borderColor, view);
    }
    if (layer.masksToBounds) {
        to.set("clips", true);
    }
    if (const auto* const styled = dynamic_cast<TextStyled*>(&view)) {
        const auto* const label = dynamic_cast<Label*>(&view);
        const auto font = label != nullptr ? label->fittedFont() : styled->shownFont();
        setColor(to, "color", styled->textColor(), view);
        to.set("font", Value::object({{"name", font.name}, {"size", font.pointSize}}));
        to.set("alignment", nameOf(styled->textAlignment()));
    }
}

std::vector<Value> described(const std::vector<std::shared_ptr<View>>& views);

Value described(View& view) {
    Object members;
    members.set("kind", ""); // the first member of each view
    setText(members, "outlet", view.identifier());
    members.set("kind", kindOf(members, view));
    members.set("frame", written(view.frameOnScreen()));
    members.set("reachable", view.isReachable());
    setText(members, "text", view.shownText());
    if (view.accessibilityLabel() != view.shownText()) {
        setText(members, "label", view.accessibilityLabel());
    }
    describeLooks(members, view);
    if (auto children = described(view.subviews()); !children.empty()) {
        members.set("children", std::move(children));
    }
    return members;
}

const char* nameOf(AccessibilityRole role) {
    switch (role) {
    case AccessibilityRole::button:
        return "button";
    case AccessibilityRole::textField:
        return "field";
    case AccessibilityRole::image:
        return "image";
    case AccessibilityRole::progress:
        return "progress";
    case AccessibilityRole::alert:
        return "alert";
    case AccessibilityRole::heading:
        return "heading";
    case AccessibilityRole::status:
        return "status";
    case AccessibilityRole::none:
    case AccessibilityRole::text:
        break;
    }
    return "text";
}

Value described(const AccessibilityElement& element) {
    Object members;
    members.set("role", nameOf(element.role));
    members.set("name", element.name);
    setText(members, "value", element.value);
    setText(members, "hint", element.hint);
    setText(members, "outlet", element.view->identifier());
    members.set("frame", written(element.view->frameOnScreen()));
    const std::pair<const char*, bool> states[] = {{"focusable", element.isFocusable}, {"focused", element.isFocused},
                                                   {"disabled", element.isDisabled},   {"busy", element.isBusy},
                                                   {"invalid", element.isInvalid},     {"required", element.isRequired},
                                                   {"modal", element.isModal}};
    std::vector<Value> those;
    for (const auto& [name, holds] : states) {
        if (holds) {
            those.emplace_back(name);
        }
    }
    members.set("states", std::move(those));
    return members;
}

/// The views that are not hidden, from the lowest up.
std::vector<Value> described(const std::vector<std::shared_ptr<View>>& views) {
    std::vector<Value> all;
    for (const auto& view : views) {
        if (!view->isHidden() && view->alpha() > 0) {
            all.push_back(described(*view));
        }
    }
    return all;
}

} // namespace

std::string snapshotOf(Window& window) {
    window.layoutIfNeeded();
    const auto screen = window.visibleViewController();
    Object members;
    members.set("width", window.frame().size.width);
    members.set("height", window.frame().size.height);
    members.set("screen", screen ? screen->navigationItem()->title() : "");
    members.set("views", described(window.subviews()));
    std::vector<Value> elements;
    for (const auto& element : accessibilityElements(window)) {
        elements.push_back(described(element));
    }
    members.set("elements", std::move(elements));
    return json::writeRepaired(members);
}

} // namespace kivo::c
