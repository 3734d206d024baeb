#include <kivo/platform/ui/Control.hpp>

namespace kivo::platform {

void Control::setEnabled(bool enabled) {
    isEnabled_ = enabled;
    noteChange();
}

void Control::addAction(ControlEvent event, Action action) {
    actions_.emplace_back(event, std::move(action));
}

void Control::sendActions(ControlEvent event) {
    const auto self = shared_from_this();
    // A copy: an action may take the control away, or add another action.
    const auto actions = actions_;
    for (const auto& [wanted, action] : actions) {
        if (wanted == event) {
            action(self);
        }
    }
}

} // namespace kivo::platform
