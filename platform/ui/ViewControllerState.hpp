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
    /// Takes itself out of here before it goes; a plain pointer, as a container has its first children before it is
    /// shared.
    ViewController* parent = nullptr;
    std::vector<std::shared_ptr<ViewController>> children{};
    std::shared_ptr<ViewController> presented{};
    std::weak_ptr<ViewController> presenting{};
    /// Of a window's root screen only.
    std::weak_ptr<Window> window{};
    Appearance appearance = Appearance::disappeared;
    std::shared_ptr<NavigationItem> navigationItem{};
    std::optional<ContentSizeCategory> contentSizeOverride{};
    /// What a storyboard laid out, until it becomes the screen's view.
    std::shared_ptr<View> storyboardView{};
    std::vector<SegueDescription> segues{};
};

} // namespace kivo::platform
