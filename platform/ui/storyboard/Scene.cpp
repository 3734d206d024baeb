#include "platform/ui/storyboard/Scene.hpp"

#include "platform/ui/storyboard/Classes.hpp"

#include <memory>
#include <string>
#include <utility>

namespace kivo::platform::storyboard {
namespace {

constexpr int deepestTree = 64;

std::string typeOf(const LayoutValue& value) {
    value.needObject();
    return value.content.find("type") != nullptr ? value.member("type").name() : "View";
}

/// Whether a plain view takes the place of a registered class, whose views are not made during a check.
bool isStandIn(const LayoutValue& value, const Scene& scene) {
    return scene.isTrial && isRegisteredView(typeOf(value));
}

std::shared_ptr<View> makeViewFor(const LayoutValue& value, const Scene& scene) {
    if (isStandIn(value, scene)) {
        return std::make_shared<View>();
    }
    const auto type = typeOf(value);
    auto view = makeView(type);
    if (!view) {
        value.where.fail("there is no view type " + inQuotes(type) + "; use one of " + knownViews() +
                         ", or register the class before the storyboard is opened.");
    }
    return view;
}

Where placeOf(const LayoutValue& value, std::size_t index, const Where& parent) {
    const auto* const outlet = value.content.textOf("outlet");
    return parent.in(outlet ? "view " + inQuotes(*outlet) : "subview " + std::to_string(index + 1));
}

void addOutlet(const LayoutValue& value, const std::shared_ptr<View>& view, Scene& scene) {
    const auto name = value.name();
    if (!scene.outlets.emplace(name, view).second) {
        value.where.fail("another view of the scene has the outlet " + inQuotes(name) +
                         " already; rename one of them.");
    }
    view->setIdentifier(name);
}

std::shared_ptr<View> buildView(const LayoutValue& value, Scene& scene, int depth);

void addSubviews(const std::shared_ptr<View>& view, const LayoutValue& list, const Where& parent, Scene& scene,
                 int depth) {
    if (list.content.kind() != json::Kind::array) {
        list.where.fail("this must be a list of views.");
    }
    for (std::size_t i = 0; const auto& element : list.content.elements()) {
        LayoutValue subview{element, list.where, list.context};
        subview.where = placeOf(subview, i++, parent);
        view->addSubview(buildView(subview, scene, depth + 1));
    }
}

/// Sets a member of the view, or of the style that gives the view some of its members.
void setViewMember(const std::shared_ptr<View>& view, const std::string& name, const LayoutValue& member,
                   const LayoutValue& value, Scene& scene) {
    if (!setMember(view, name, member, scene) && !isStandIn(value, scene)) {
        member.where.fail("a view of the type " + typeOf(value) + " has no such member; it has " + knownMembers(*view) +
                          ".");
    }
}

/// Gives the view the members that the style named by `style` has and the view itself has not.
void applyStyle(const std::shared_ptr<View>& view, const LayoutValue& style, const LayoutValue& value, Scene& scene) {
    const auto word = style.name();
    const auto* const found = style.context.styles != nullptr ? style.context.styles->find(word) : nullptr;
    if (found == nullptr) {
        style.where.fail("the storyboard has no style " + inQuotes(word) + R"(; add it to "styles".)");
    }
    LayoutValue{*found, style.where.in(inQuotes(word)), style.context}.eachMember(
        [&](const std::string& name, const LayoutValue& member) {
            if (value.content.find(name) == nullptr) {
                setViewMember(view, name, member, value, scene);
            }
        });
}

/// Makes the view that `value` describes and every view below, and notes their connections in `scene`.
std::shared_ptr<View> buildView(const LayoutValue& value, Scene& scene, int depth) {
    if (depth > deepestTree) {
        value.where.fail("views are nested more than " + std::to_string(deepestTree) + " deep; flatten the tree.");
    }
    auto view = makeViewFor(value, scene);
    value.eachMember([&](const std::string& name, const LayoutValue& member) {
        if (name == "type") {
            return;
        }
        if (name == "outlet") {
            addOutlet(member, view, scene);
        } else if (name == "subviews") {
            addSubviews(view, member, value.where, scene, depth);
        } else if (name == "style") {
            applyStyle(view, member, value, scene);
        } else {
            setViewMember(view, name, member, value, scene);
        }
    });
    return view;
}

void readConstraints(const LayoutValue& value, Scene& scene) {
    value.eachMember([&](const std::string& name, const LayoutValue& constraint) {
        const auto outlet = constraint.member("view").name();
        const auto view = scene.outlets.find(outlet);
        if (view == scene.outlets.end()) {
            constraint.where.fail("no view of the scene has the outlet " + inQuotes(outlet) + ".");
        }
        using enum LayoutConstraint::Attribute;
        const auto attribute =
            constraint.member("dimension").choice<LayoutConstraint::Attribute>({{"width", width}, {"height", height}});
        scene.constraints.emplace(name, std::make_shared<LayoutConstraint>(view->second, attribute));
    });
}

} // namespace

Scene readScene(const LayoutValue& value, Purpose purpose) {
    Scene scene;
    scene.isTrial = purpose == Purpose::check;
    scene.className = value.member("class").name();
    if (!isScreenClass(scene.className)) {
        value.where.fail("there is no screen class " + inQuotes(scene.className) + "; use one of " + knownScreens() +
                         ", or register the class before the storyboard is opened.");
    }
    scene.view = buildView(value.member("view"), scene, 0);
    value.eachMember([&](const std::string& name, const LayoutValue& member) {
        if (name == "title") {
            scene.title = member.text();
        } else if (name == "presentation") {
            using enum ModalPresentationStyle;
            scene.presentation =
                member.choice<ModalPresentationStyle>({{"automatic", automatic}, {"fullScreen", fullScreen}});
        } else if (name == "constraints") {
            readConstraints(member, scene);
        } else if (name != "class" && name != "view") {
            member.where.fail("a scene has no such member; it has class, title, presentation, view and constraints.");
        }
    });
    return scene;
}

} // namespace kivo::platform::storyboard
