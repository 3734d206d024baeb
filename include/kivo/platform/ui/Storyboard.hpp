#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

class Bundle;

/// Screens laid out in a file, the resource `name`.storyboard of a bundle: scenes by identifier, each with a class and
/// a tree of views. docs/storyboards.md describes the file.
class KIVO_EXPORT Storyboard : public std::enable_shared_from_this<Storyboard> {
public:
    /// Makes a new object of a class; must not return null.
    using Factory = std::function<std::shared_ptr<ViewController>()>;
    using ViewFactory = std::function<std::shared_ptr<View>()>;

    /// Reads and checks the file, whose classes must be registered before. The error is one sentence for the person who
    /// lays out screens: file, scene, view, fault and remedy.
    static std::expected<std::shared_ptr<Storyboard>, std::string> open(std::string_view name,
                                                                        const std::shared_ptr<Bundle>& bundle);

    Storyboard(const Storyboard&) = delete;
    Storyboard& operator=(const Storyboard&) = delete;
    ~Storyboard();

    /// A new screen of the scene with that identifier. Every outlet and action is connected; `viewDidLoad` runs later.
    /// The error names file, scene and outlet.
    std::expected<std::shared_ptr<ViewController>, std::string> instantiate(std::string_view identifier);

    /// Registers a class of screens, or of views, under the name that storyboards use. The last registration of a name
    /// counts, so that a host's class can replace a class of the SDK.
    static void registerScreen(std::string className, Factory factory);
    static void registerView(std::string className, ViewFactory factory);

private:
    struct Contents;
    struct LastOpened;

    explicit Storyboard(std::unique_ptr<Contents> contents);

    std::unique_ptr<Contents> contents_;
};

/// Classes of screens and of views by their names.
struct StoryboardClasses {
    /// What makes an object of each class.
    std::map<std::string, Storyboard::Factory> screens{};
    std::map<std::string, Storyboard::ViewFactory> views{};
    /// Finds the bundle with the texts, colours and images for which the host's bundle has none; null without such a
    /// bundle.
    std::shared_ptr<Bundle> (*bundle)() = nullptr;
};

/// The classes and resources that storyboards know without registration, in addition to the view model's own. The
/// library that stands on the view model defines this function.
StoryboardClasses libraryClasses();

} // namespace kivo::platform
