#pragma once

#include <kivo/kivo.hpp>
#include <kivo/simulator/Person.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace demo {

/// The host application's display, with a person in front of it. Functions return what went wrong, or nothing.
class Display {
public:
    /// Whether the screen of interface version `version` empties its boxes by itself after a refused code.
    explicit Display(bool boxesAreReset);

    /// What the host gives to `setContext`.
    std::shared_ptr<kivo::platform::ViewController> context() const { return start_; }

    std::shared_ptr<kivo::platform::Window> window() const { return window_; }

    /// Types an activation code into the boxes, which must be, or be made, empty first.
    std::string typeCode(std::string_view code);

    std::string tap(std::string_view button);

    /// Takes the SDK's screen away again, as a host does once it has what it wanted.
    void returnToStart();

    /// Presents the closing screen, as a host does at the end of the road.
    std::string showFinalStatus();
    std::string leaveFinalStatus();

private:
    bool boxesAreEmpty() const;

    const bool boxesAreReset_;
    std::shared_ptr<kivo::platform::ViewController> start_ = std::make_shared<kivo::platform::ViewController>();
    std::shared_ptr<kivo::platform::NavigationController> navigation_ =
        std::make_shared<kivo::platform::NavigationController>(start_);
    std::shared_ptr<kivo::platform::Window> window_ = std::make_shared<kivo::platform::Window>();
    kivo::simulator::Person person_{window_};
};

} // namespace demo
