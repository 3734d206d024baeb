#include "platform/ui/storyboard/Classes.hpp"
#include "platform/ui/storyboard/Members.hpp"
#include "platform/ui/storyboard/Scene.hpp"

namespace kivo::platform::storyboard {
namespace {

constexpr int deepestTree = 64;

std::string typeOf(const Value& value) {
    value.needObject();
    return value.content.find("type") != nullptr ? value.member("type").name() : "View";
}

bool isStandIn(const Value& value, const Scene& scene) {
    return scene.isTrial && isRegisteredView(typeOf(value));
}

std::shared_ptr<View> makeViewFor(const Value& value, const Scene& scene) {
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

Where placeOf(const Value& value, std::size_t index, const Where& parent) {
    const auto* const outlet = value.content.textOf("outlet");
    return parent.in(outlet ? "view " + inQuotes(*outlet) : "subview " + std::to_string(index + 1));
}

void addOutlet(const Value& value, const std::shared_ptr<View>& view, Scene& scene) {
    const auto name = value.name();
    if (!scene.outlets.emplace(name, view).second) {
        value.where.fail("another view of the scene has the outlet " + inQuotes(name) +
                         " already; rename one of them.");
    }
    view->setIdentifier(name);
}

std::shared_ptr<View> build(const Value& value, Scene& scene, int depth) {
    if (depth > deepestTree) {
        value.where.fail("views are nested more than " + std::to_string(deepestTree) + " deep; flatten the tree.");
    }
    auto view = makeViewFor(value, scene);
    value.eachMember([&](const std::string& name, const Value& member) {
        if (name == "type") {
            return;
        }
        if (name == "outlet") {
            addOutlet(member, view, scene);
        } else if (name == "subviews") {
            if (member.content.kind() != json::Kind::array) {
                member.where.fail("this must be a list of views.");
            }
            for (std::size_t i = 0; const auto& element : member.content.elements()) {
                Value subview{element, member.where, member.bundle};
                subview.where = placeOf(subview, i++, value.where);
                view->addSubview(build(subview, scene, depth + 1));
            }
        } else if (!setMember(view, name, member, scene) && !isStandIn(value, scene)) {
            member.where.fail("a view of the type " + typeOf(value) + " has no such member; it has " +
                              knownMembers(*view) + ".");
        }
    });
    return view;
}

} // namespace

std::shared_ptr<View> buildView(const Value& value, Scene& scene) {
    return build(value, scene, 0);
}

} // namespace kivo::platform::storyboard
