#pragma once

#include "platform/ui/storyboard/Scene.hpp"

#include <kivo/platform/ui/Interface.hpp>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace kivo::platform::storyboard {

/// Fills a screen's outlets from its scene, and collects the actions that the scene's controls may call.
class Connections final : public Interface {
public:
    using Constraints = std::map<std::string, std::shared_ptr<LayoutConstraint>, std::less<>>;

    Connections(const Scene& scene, const Constraints& constraints, Where where)
        : scene_{scene}
        , constraints_{constraints}
        , where_{std::move(where)} {}

    void action(std::string_view name, Action action) override;

    /// Makes the scene's controls call the actions, for as long as the screen lives.
    void connectActions(const std::shared_ptr<ViewController>& screen) const;

protected:
    bool hasOutlet(std::string_view name) const override;
    void connectView(std::string_view name, const std::type_info& wanted,
                     const std::function<bool(const std::shared_ptr<View>&)>& take) override;
    void connectConstraint(std::string_view name, std::shared_ptr<LayoutConstraint>& slot) override;

private:
    const Scene& scene_;
    const Constraints& constraints_;
    Where where_;
    std::map<std::string, Action, std::less<>> actions_;
};

} // namespace kivo::platform::storyboard
