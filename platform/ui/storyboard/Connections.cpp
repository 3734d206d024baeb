#include "platform/ui/storyboard/Connections.hpp"

#include <cxxabi.h>

#include <cstdlib>
#include <typeinfo>

namespace kivo::platform::storyboard {
namespace {

/// The class's name without its namespaces.
std::string className(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable{
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free};
    std::string name{readable ? readable.get() : type.name()};
    const auto colon = name.rfind(':');
    return colon == std::string::npos ? name : name.substr(colon + 1);
}

} // namespace

void Connections::action(std::string_view name, Action action) {
    actions_.insert_or_assign(std::string{name}, std::move(action));
}

bool Connections::hasOutlet(std::string_view name) const {
    return scene_.outlets.contains(name) || constraints_.contains(name);
}

void Connections::connectView(std::string_view name, const std::type_info& wanted,
                              const std::function<bool(const std::shared_ptr<View>&)>& take) {
    const auto found = scene_.outlets.find(name);
    if (found == scene_.outlets.end()) {
        where_.fail("no view has the outlet " + inQuotes(name) + "; give it to a " + className(wanted) + ".");
    }
    if (!take(found->second)) {
        const auto& view = *found->second;
        where_.fail("the view " + inQuotes(name) + " is a " + className(typeid(view)) + " where the screen needs a " +
                    className(wanted) + "; change its \"type\".");
    }
}

void Connections::connectConstraint(std::string_view name, std::shared_ptr<LayoutConstraint>& slot) {
    const auto found = constraints_.find(name);
    if (found == constraints_.end()) {
        where_.fail("there is no constraint " + inQuotes(name) + R"(; add it to the scene's "constraints".)");
    }
    slot = found->second;
}

void Connections::connectActions(const std::shared_ptr<ViewController>& screen) const {
    for (const auto& wish : scene_.wishes) {
        const auto found = actions_.find(wish.action);
        if (found == actions_.end()) {
            std::string known;
            for (const auto& [name, action] : actions_) {
                known += (known.empty() ? "" : ", ") + name;
            }
            wish.where.fail("the screen has no action " + inQuotes(wish.action) + "; it has " +
                            (known.empty() ? "none" : known) + ".");
        }
        wish.control->addAction(wish.event, [weak = std::weak_ptr{screen}, action = found->second](const auto& sender) {
            if (const auto alive = weak.lock()) {
                action(sender);
            }
        });
    }
}

} // namespace kivo::platform::storyboard
