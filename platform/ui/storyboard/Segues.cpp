#include "platform/ui/ViewControllerState.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <algorithm>

namespace kivo::platform {

bool ViewController::performSegue(std::string_view identifier) {
    const auto self = shared_from_this();
    const auto fail = [&](const std::string& problem) {
        services().diagnostics->report("storyboard",
                                       "The segue \"" + std::string{identifier} + "\" was not performed: " + problem);
        return false;
    };
    const auto segue = std::ranges::find(state_->segues, identifier, &SegueDescription::identifier);
    if (segue == state_->segues.end() || !storyboard_) {
        return fail("this screen has none of that name.");
    }
    const auto destination = storyboard_->instantiate(segue->destination);
    if (!destination) {
        return fail(destination.error());
    }
    const auto kind = segue->kind;
    prepareForSegue({.identifier = segue->identifier, .source = self, .destination = *destination});
    const auto navigation = navigationController();
    if (kind == SegueDescription::Kind::show && navigation) {
        navigation->pushViewController(*destination, true);
    } else {
        present(*destination, true);
    }
    return true;
}

} // namespace kivo::platform
