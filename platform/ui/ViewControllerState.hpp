#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {

/// A segue as its storyboard scene describes it.
struct SegueDescription {
    enum class Kind { show, present };

    std::string identifier;
    std::string destination;
    Kind kind = Kind::show;
};

struct ViewController::State {
    /// The parent's destructor resets this pointer. It is no weak pointer, because a container has its first children
    /// before a shared pointer owns the container.
    ViewController* parent = nullptr;
    std::vector<std::shared_ptr<ViewController>> children{};
    std::shared_ptr<ViewController> presented{};
    std::weak_ptr<ViewController> presenting{};
    /// Set for a window's root screen only.
    std::weak_ptr<Window> window{};
    Appearance appearance = Appearance::disappeared;
    std::shared_ptr<NavigationItem> navigationItem{};
    std::optional<ContentSizeCategory> contentSizeOverride{};
    /// The view made by the storyboard, until it becomes the screen's view.
    std::shared_ptr<View> storyboardView{};
    std::vector<SegueDescription> segues{};
};

} // namespace kivo::platform
