#pragma once

#include "platform/ui/storyboard/Scene.hpp"

#include <memory>
#include <string>

namespace kivo::platform::storyboard {

/// Sets the property that the member `name` of the file stands for. False when the view's class has no such member.
bool setMember(const std::shared_ptr<View>& view, const std::string& name, const Value& value, Scene& scene);

/// The members that the view's class has, for a message.
std::string knownMembers(View& view);

} // namespace kivo::platform::storyboard
