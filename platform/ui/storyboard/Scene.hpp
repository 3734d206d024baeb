#pragma once

#include "platform/ui/ViewControllerState.hpp"
#include "platform/ui/storyboard/Values.hpp"

#include <kivo/platform/ui/Control.hpp>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kivo::platform::storyboard {

/// The wish of a control that one of its screen's actions be called.
struct Wish {
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

/// What the view tree of one scene gives: the views, and the connections that its screen has yet to make.
struct Scene {
    /// Read only to be checked. Registered classes make no view then: theirs may do something from the start, such as
    /// use the camera. What is said about their members is checked when the scene is made in earnest.
    bool isTrial = false;
    std::shared_ptr<View> view{};
    std::map<std::string, std::shared_ptr<View>, std::less<>> outlets{};
    std::vector<Wish> wishes{};
    std::vector<ButtonSegue> segues{};
};

/// Makes the view that `value` describes with everything below it, and notes its connections in `scene`.
std::shared_ptr<View> buildView(const Value& value, Scene& scene);

} // namespace kivo::platform::storyboard
