#include "platform/ui/storyboard/Classes.hpp"

#include "platform/base/Process.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/TextView.hpp>

#include <map>
#include <utility>

namespace kivo::platform {
namespace storyboard {
namespace {

using Views = std::map<std::string, Storyboard::ViewFactory>;

template <class T>
std::shared_ptr<T> make() {
    return std::make_shared<T>();
}

StoryboardClasses knownFromTheStart() {
    auto all = libraryClasses();
    all.screens.emplace("ViewController", make<ViewController>);
    return all;
}

struct Registered {
    StoryboardClasses classes = knownFromTheStart();
    std::size_t registrations = 0;
};

/// Made at first use: a host's static initialisers may use it as well.
Registered& registered() {
    return Process::current().part<Registered>([] { return new Registered; });
}

auto& screens() {
    return registered().classes.screens;
}

/// The registered classes of views, which come before the view model's own.
Views& registeredViews() {
    return registered().classes.views;
}

const Views& ownViews() {
    static const auto& all =
        *new Views{{"View", make<View>},
                   {"Label", make<Label>},
                   {"TextView", make<TextView>},
                   {"Button", make<Button>},
                   {"TextField", make<TextField>},
                   {"StackView", make<StackView>},
                   {"ScrollView", make<ScrollView>},
                   {"ImageView", make<ImageView>},
                   {"ActivityIndicatorView", [] { return std::make_shared<ActivityIndicatorView>(); }}};
    return all;
}

std::string names(const auto& classes) {
    std::string all;
    for (const auto& [name, factory] : classes) {
        all += (all.empty() ? "" : ", ") + name;
    }
    return all;
}

template <class T>
std::shared_ptr<T> makeOf(const std::map<std::string, std::function<std::shared_ptr<T>()>>& classes,
                          const std::string& name) {
    const auto found = classes.find(name);
    return found != classes.end() && found->second ? found->second() : nullptr;
}

} // namespace

bool isScreenClass(const std::string& name) {
    return screens().contains(name);
}

std::shared_ptr<ViewController> makeScreen(const std::string& name) {
    return makeOf<ViewController>(screens(), name);
}

std::shared_ptr<View> makeView(const std::string& name) {
    const auto view = makeOf<View>(registeredViews(), name);
    return view || isRegisteredView(name) ? view : makeOf<View>(ownViews(), name);
}

bool isRegisteredView(const std::string& name) {
    return registeredViews().contains(name);
}

std::shared_ptr<Bundle> libraryBundle() {
    const auto& classes = registered().classes;
    return classes.bundle != nullptr ? classes.bundle() : nullptr;
}

std::size_t registrations() {
    return registered().registrations;
}

std::string knownScreens() {
    return names(screens());
}

std::string knownViews() {
    return names(ownViews()) + (registeredViews().empty() ? "" : ", " + names(registeredViews()));
}

} // namespace storyboard

void Storyboard::registerScreen(std::string className, Factory factory) {
    ++storyboard::registered().registrations;
    storyboard::screens().insert_or_assign(std::move(className), std::move(factory));
}

void Storyboard::registerView(std::string className, ViewFactory factory) {
    ++storyboard::registered().registrations;
    storyboard::registeredViews().insert_or_assign(std::move(className), std::move(factory));
}

} // namespace kivo::platform
