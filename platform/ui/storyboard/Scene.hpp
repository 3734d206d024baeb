#pragma once

#include "platform/ui/ViewControllerState.hpp"
#include "platform/ui/storyboard/LayoutValue.hpp"

#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/LayoutConstraint.hpp>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kivo::platform::storyboard {

/// An action of the screen that a control of the scene calls.
struct WantedAction {
    std::shared_ptr<Control> control;
    ControlEvent event;
    std::string action;
    Where where;
};

struct ButtonSegue {
    std::shared_ptr<Control> button;
    SegueDescription description;
    Where where;
};

/// A scene of the file: its tree of views, and the connections that its screen has yet to make.
struct Scene {
    /// Whether the scene is read only to be checked. Registered classes make no view then, because their views may act
    /// at once, such as use the camera. The members of such views are checked when the scene is used.
    bool isTrial = false;
    std::string className{};
    std::string title{};
    ModalPresentationStyle presentation = ModalPresentationStyle::automatic;
    std::shared_ptr<View> view{};
    std::map<std::string, std::shared_ptr<View>, std::less<>> outlets{};
    std::map<std::string, std::shared_ptr<LayoutConstraint>, std::less<>> constraints{};
    std::vector<WantedAction> actions{};
    std::vector<ButtonSegue> segues{};
};

enum class Purpose { check, use };

/// Reads the scene that `value` describes and makes its views.
Scene readScene(const LayoutValue& value, Purpose purpose);

/// Sets the property of a view that the file's member `name` stands for, or notes a connection in `scene`. False when
/// the view's class has no such member.
bool setMember(const std::shared_ptr<View>& view, const std::string& name, const LayoutValue& value, Scene& scene);

/// The members that the view's class has, for a message.
std::string knownMembers(View& view);

} // namespace kivo::platform::storyboard
