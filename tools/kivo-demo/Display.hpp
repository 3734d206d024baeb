#pragma once

#include <kivo/kivo.hpp>
#include <kivo/simulator/Person.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace demo {

/// The host application's display, with a person in front of it. The functions return an error as a sentence, or an
/// empty text.
class Display {
public:
    /// `boxesAreReset` tells whether the interface version's code screen empties its boxes after a refused code.
    explicit Display(bool boxesAreReset);

    /// The screen that the host passes to `setContext`.
    std::shared_ptr<kivo::platform::ViewController> context() const { return start_; }

    std::shared_ptr<kivo::platform::Window> window() const { return window_; }

    /// Empties the boxes where need be, and types an activation code.
    std::string typeCode(std::string_view code);

    std::string tap(std::string_view button);
    std::string type(std::string_view field, std::string_view text);

    /// Removes the SDK's screen, as a host does after the outcome that it waits for.
    void returnToStart();

    /// Presents the closing screen, as a host does at the end of the road.
    std::string showFinalStatus(const std::shared_ptr<kivo::ThemeCustomization>& theme);

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
