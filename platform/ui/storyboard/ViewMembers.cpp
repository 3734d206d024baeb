// The members that each class of views has in a storyboard.
#include "platform/ui/storyboard/Scene.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/LayoutMembers.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

namespace kivo::platform::storyboard {
namespace {

template <class T>
using Setters = std::map<std::string, void (*)(T&, const LayoutValue&), std::less<>>;

void setLayer(View& view, const LayoutValue& value) {
    view.changeLayer([&](Layer& layer) {
        value.eachMember([&](const std::string& name, const LayoutValue& member) {
            if (name == "cornerRadius") {
                layer.cornerRadius = member.number(0, 1000);
            } else if (name == "borderWidth") {
                layer.borderWidth = member.number(0, 1000);
            } else if (name == "borderColor") {
                layer.borderColor = member.color();
            } else if (name == "masksToBounds") {
                layer.masksToBounds = member.flag();
            } else {
                member.where.fail(
                    "a layer has no such member; it has cornerRadius, borderWidth, borderColor and masksToBounds.");
            }
        });
    });
}

void setAccessibility(View& view, const LayoutValue& value) {
    static constexpr std::pair<std::string_view, bool Accessibility::*> flags[] = {
        {"hidden", &Accessibility::isHidden},   {"heading", &Accessibility::isHeading},
        {"invalid", &Accessibility::isInvalid}, {"required", &Accessibility::isRequired},
        {"live", &Accessibility::isLive},       {"modal", &Accessibility::isModal}};
    view.changeAccessibility([&](Accessibility& accessibility) {
        value.eachMember([&](const std::string& name, const LayoutValue& member) {
            const auto* const known = std::ranges::find(flags, name, [](const auto& flag) { return flag.first; });
            if (known != std::end(flags)) {
                accessibility.*(known->second) = member.flag();
            } else if (name == "hint") {
                accessibility.hint = member.text();
            } else {
                member.where.fail("there is no such property; there are hidden, heading, invalid, required, live, "
                                  "modal and hint.");
            }
        });
    });
}

const Setters<View> viewMembers{
    {"tag",
     [](View& view, const LayoutValue& value) {
         view.setTag(value.integer(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
     }},
    {"hidden", [](View& view, const LayoutValue& value) { view.setHidden(value.flag()); }},
    {"alpha", [](View& view, const LayoutValue& value) { view.setAlpha(value.number(0, 1)); }},
    {"placement", [](View& view, const LayoutValue& value) { view.setPlacement(value.placement()); }},
    {"backgroundColor", [](View& view, const LayoutValue& value) { view.setBackgroundColor(value.color()); }},
    {"tintColor", [](View& view, const LayoutValue& value) { view.setTintColor(value.color()); }},
    {"layer", setLayer},
    {"userInteractionEnabled",
     [](View& view, const LayoutValue& value) { view.setUserInteractionEnabled(value.flag()); }},
    {"appearance",
     [](View& view, const LayoutValue& value) {
         using enum UserInterfaceStyle;
         view.overrideUserInterfaceStyle(value.choice<UserInterfaceStyle>({{"light", light}, {"dark", dark}}));
     }},
    {"direction",
     [](View& view, const LayoutValue& value) {
         using enum LayoutDirection;
         view.overrideLayoutDirection(
             value.choice<LayoutDirection>({{"leftToRight", leftToRight}, {"rightToLeft", rightToLeft}}));
     }},
    {"passesTouches", [](View& view, const LayoutValue& value) { view.setPassesTouches(value.flag()); }},
    {"accessibility", setAccessibility},
    {"accessibilityLabel", [](View& view, const LayoutValue& value) { view.setAccessibilityLabel(value.text()); }},
};

const Setters<TextStyled> textMembers{
    {"font", [](TextStyled& view, const LayoutValue& value) { view.setFont(value.font()); }},
    {"textColor",
     [](TextStyled& view, const LayoutValue& value) { view.setTextColor(value.color().value_or(view.textColor())); }},
    {"textAlignment",
     [](TextStyled& view, const LayoutValue& value) {
         using enum TextAlignment;
         view.setTextAlignment(
             value.choice<TextAlignment>({{"natural", natural}, {"left", left}, {"center", center}, {"right", right}}));
     }},
    {"adjustsFont",
     [](TextStyled& view, const LayoutValue& value) { view.setAdjustsFontForContentSizeCategory(value.flag()); }},
};

const Setters<Label> labelMembers{
    {"text", [](Label& view, const LayoutValue& value) { view.setText(value.text()); }},
    {"shrinksToWords", [](Label& view, const LayoutValue& value) { view.setShrinksToWords(value.flag()); }},
};

const Setters<Control> controlMembers{
    {"enabled", [](Control& view, const LayoutValue& value) { view.setEnabled(value.flag()); }},
};

const Setters<Button> buttonMembers{
    {"title", [](Button& view, const LayoutValue& value) { view.setTitle(value.text()); }},
    {"image", [](Button& view, const LayoutValue& value) { view.setImage(value.image()); }},
    {"backgroundImage", [](Button& view, const LayoutValue& value) { view.setBackgroundImage(value.image()); }},
};

const Setters<TextField> fieldMembers{
    {"text", [](TextField& view, const LayoutValue& value) { view.setText(value.text()); }},
    {"placeholder", [](TextField& view, const LayoutValue& value) { view.setPlaceholder(value.text()); }},
    {"keyboard",
     [](TextField& view, const LayoutValue& value) {
         using enum KeyboardType;
         view.setKeyboardType(value.choice<KeyboardType>({{"standard", standard},
                                                          {"asciiCapable", asciiCapable},
                                                          {"numberPad", numberPad},
                                                          {"namePhonePad", namePhonePad}}));
     }},
    {"autocorrected", [](TextField& view, const LayoutValue& value) { view.setAutocorrected(value.flag()); }},
};

const Setters<StackView> stackMembers{
    {"axis",
     [](StackView& view, const LayoutValue& value) {
         using enum StackView::Axis;
         view.setAxis(value.choice<StackView::Axis>({{"horizontal", horizontal}, {"vertical", vertical}}));
     }},
    {"spacing", [](StackView& view, const LayoutValue& value) { view.setSpacing(value.number(0, 1000)); }},
    {"alignment",
     [](StackView& view, const LayoutValue& value) {
         using enum StackView::Alignment;
         view.setAlignment(value.choice<StackView::Alignment>(
             {{"fill", fill}, {"leading", leading}, {"center", center}, {"trailing", trailing}}));
     }},
    {"distribution",
     [](StackView& view, const LayoutValue& value) {
         using enum StackView::Distribution;
         view.setDistribution(value.choice<StackView::Distribution>({{"fill", fill}, {"fillEqually", fillEqually}}));
     }},
    {"margins", [](StackView& view, const LayoutValue& value) { view.setMargins(value.insets()); }},
};

const Setters<ImageView> imageMembers{
    {"image", [](ImageView& view, const LayoutValue& value) { view.setImage(value.image()); }},
};

const Setters<ActivityIndicatorView> activityMembers{
    {"color", [](ActivityIndicatorView& view,
                 const LayoutValue& value) { view.setColor(value.color().value_or(view.color())); }},
    {"animating", [](ActivityIndicatorView& view,
                     const LayoutValue& value) { value.flag() ? view.startAnimating() : view.stopAnimating(); }},
};

/// Calls `visit(object, setters)` for each class of the view, until a call returns true.
template <class Visit>
bool anyClass(View& view, const Visit& visit) {
    const auto as = [&]<class T>(const Setters<T>& setters) {
        auto* const object = dynamic_cast<T*>(&view);
        return object && visit(*object, setters);
    };
    return as(viewMembers) || as(textMembers) || as(labelMembers) || as(controlMembers) || as(buttonMembers) ||
           as(fieldMembers) || as(stackMembers) || as(imageMembers) || as(activityMembers);
}

/// Sets the member `name` if the view itself has such a member, and collects the names of all the view's own members.
class OwnMembers final : public LayoutMembers {
public:
    OwnMembers() = default;

    OwnMembers(std::string_view name, const LayoutValue& value)
        : name_{name}
        , value_{&value} {}

    void flag(std::string_view name, const std::function<void(bool)>& set) override {
        if (isMeant(name)) {
            set(value_->flag());
        }
    }

    void integer(std::string_view name, int least, int most, const std::function<void(int)>& set) override {
        if (isMeant(name)) {
            set(value_->integer(least, most));
        }
    }

    void number(std::string_view name, double least, double most, const std::function<void(double)>& set) override {
        if (isMeant(name)) {
            set(value_->number(least, most));
        }
    }

    void text(std::string_view name, const std::function<void(std::string)>& set) override {
        if (isMeant(name)) {
            set(value_->text());
        }
    }

    void color(std::string_view name, const std::function<void(Color)>& set) override {
        if (const auto color = isMeant(name) ? value_->color() : std::nullopt) {
            set(*color);
        }
    }

    void font(std::string_view name, const std::function<void(Font)>& set) override {
        if (isMeant(name)) {
            set(value_->font());
        }
    }

    void choice(std::string_view name, const std::vector<std::string_view>& words,
                const std::function<void(std::size_t)>& set) override {
        if (!isMeant(name)) {
            return;
        }
        const auto word = std::ranges::find(words, value_->name());
        if (word == words.end()) {
            std::string known;
            for (const auto each : words) {
                known.append(known.empty() ? "" : ", ").append(inQuotes(each));
            }
            value_->where.fail("there is no " + inQuotes(value_->name()) + "; use one of " + known + ".");
        }
        set(static_cast<std::size_t>(word - words.begin()));
    }

    bool hasSet() const { return hasSet_; }

    const std::string& names() const { return names_; }

private:
    bool isMeant(std::string_view name) {
        names_.append(", ").append(name);
        const bool isMeant = value_ && name == name_;
        hasSet_ = hasSet_ || isMeant;
        return isMeant;
    }

    std::string_view name_;
    const LayoutValue* value_ = nullptr;
    bool hasSet_ = false;
    std::string names_;
};

bool setOwnMember(View& view, const std::string& name, const LayoutValue& value) {
    OwnMembers members{name, value};
    if (auto* const described = dynamic_cast<DescribedInLayouts*>(&view)) {
        described->describe(members);
    }
    return members.hasSet();
}

void addActions(const std::shared_ptr<Control>& control, const LayoutValue& value, Scene& scene) {
    static const std::map<std::string, ControlEvent, std::less<>> events{
        {"touchUpInside", ControlEvent::touchUpInside},
        {"editingDidBegin", ControlEvent::editingDidBegin},
        {"editingChanged", ControlEvent::editingChanged},
        {"editingDidEnd", ControlEvent::editingDidEnd}};
    value.eachMember([&](const std::string& name, const LayoutValue& action) {
        const auto event = events.find(name);
        if (event == events.end()) {
            action.where.fail("a control has no such event; it has touchUpInside, editingDidBegin, editingChanged and "
                              "editingDidEnd.");
        }
        scene.actions.push_back({control, event->second, action.name(), action.where});
    });
}

void addSegue(const std::shared_ptr<Control>& button, const LayoutValue& value, Scene& scene) {
    SegueDescription segue{.identifier = value.member("identifier").name(),
                           .destination = value.member("destination").name()};
    value.eachMember([&](const std::string& name, const LayoutValue& member) {
        if (name == "kind") {
            using enum SegueDescription::Kind;
            segue.kind = member.choice<SegueDescription::Kind>({{"show", show}, {"present", present}});
        } else if (name != "identifier" && name != "destination") {
            member.where.fail(R"(a segue has no such member; it has "identifier", "destination" and "kind".)");
        }
    });
    scene.segues.push_back({button, std::move(segue), value.where});
}

} // namespace

bool setMember(const std::shared_ptr<View>& view, const std::string& name, const LayoutValue& value, Scene& scene) {
    if (const auto control = std::dynamic_pointer_cast<Control>(view); control && name == "actions") {
        addActions(control, value, scene);
        return true;
    }
    if (const auto button = std::dynamic_pointer_cast<Button>(view); button && name == "segue") {
        addSegue(button, value, scene);
        return true;
    }
    return setOwnMember(*view, name, value) || anyClass(*view, [&](auto& object, const auto& setters) {
               const auto setter = setters.find(name);
               if (setter == setters.end()) {
                   return false;
               }
               setter->second(object, value);
               return true;
           });
}

std::string knownMembers(View& view) {
    std::string known = "type, outlet, style, subviews";
    anyClass(view, [&](const auto&, const auto& setters) {
        for (const auto& [name, setter] : setters) {
            known += ", " + name;
        }
        return false;
    });
    if (auto* const described = dynamic_cast<DescribedInLayouts*>(&view)) {
        OwnMembers own;
        described->describe(own);
        known += own.names();
    }
    if (dynamic_cast<const Control*>(&view)) {
        known += ", actions";
    }
    if (dynamic_cast<const Button*>(&view)) {
        known += ", segue";
    }
    return known;
}

} // namespace kivo::platform::storyboard
