#include "platform/base/Process.hpp"
#include "platform/posix/Files.hpp"
#include "platform/ui/ViewControllerState.hpp"
#include "platform/ui/storyboard/Classes.hpp"
#include "platform/ui/storyboard/Scene.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>

namespace kivo::platform {

using storyboard::ButtonSegue;
using storyboard::inQuotes;
using storyboard::LayoutContext;
using storyboard::LayoutError;
using storyboard::LayoutValue;
using storyboard::Purpose;
using storyboard::readScene;
using storyboard::Scene;
using storyboard::Where;

struct Storyboard::Contents {
    std::string file;
    std::shared_ptr<Bundle> bundle;
    json::Value root;
    LayoutContext context{bundle, root.find("values"), root.find("styles")};

    LayoutValue rootValue() const { return {root, Where{file}, context}; }
};

/// The storyboard opened last, which is not read and checked again while nothing has changed. Main thread.
struct Storyboard::LastOpened {
    std::shared_ptr<Storyboard> storyboard;
    std::string bytes;
    std::size_t registrations = 0;

    static LastOpened& ofProcess() {
        return Process::current().part<LastOpened>([] { return new LastOpened; });
    }

    bool is(const std::string& file, const std::shared_ptr<Bundle>& bundle, const std::string& now) const {
        return storyboard && storyboard->contents_->file == file && storyboard->contents_->bundle == bundle &&
               registrations == storyboard::registrations() && bytes == now;
    }
};

namespace {

/// The deepest allowed tree of views has two levels for each view, and a few levels around it.
constexpr json::Limits limits{.bytes = largestFile, .depth = 256, .members = 200'000, .comments = true};

std::string readWhole(const std::filesystem::path& path) {
    auto bytes = readFile(path);
    if (!bytes || !*bytes) {
        Where{path.string()}.fail("the file " + (bytes ? "does not exist" : bytes.error()) +
                                  "; put one there that can be read.");
    }
    return std::move(**bytes);
}

json::Value parse(const std::string& bytes, const std::string& file) {
    auto content = json::read(bytes, limits);
    if (content) {
        return std::move(*content);
    }
    const auto& [kind, offset] = content.error();
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(offset + 1, bytes.size()));
    const auto line = std::count(bytes.begin(), end, '\n') + 1;
    const auto lineStart = std::find(std::make_reverse_iterator(end), bytes.rend(), '\n').base();
    const auto where = Where{file}.in("line " + std::to_string(line) + ", column " +
                                      std::to_string(std::max<std::ptrdiff_t>(end - lineStart, 1)));
    if (kind == json::Refusal::Kind::notJson) {
        where.fail("this is no JSON; correct it here or just before.");
    }
    if (kind == json::Refusal::Kind::tooDeep) {
        where.fail("objects and lists are nested more than " + std::to_string(limits.depth) +
                   " deep; flatten the tree.");
    }
    where.fail("the file has more than " + std::to_string(limits.members) +
               " members and elements of lists; split it into several storyboards.");
}

LayoutValue scenesOf(const LayoutValue& root) {
    root.eachMember([](const std::string& name, const LayoutValue& member) {
        if (name == "values" || name == "styles") {
            member.needObject();
        } else if (name != "scenes") {
            member.where.fail(R"(a storyboard has no such member; it has "values", "styles" and "scenes".)");
        }
    });
    return root.member("scenes");
}

LayoutValue sceneValue(const LayoutValue& root, const std::string& identifier) {
    const auto scenes = scenesOf(root);
    const auto* const scene = scenes.content.find(identifier);
    if (scene == nullptr) {
        root.where.fail("there is no scene " + inQuotes(identifier) + R"(; add it to "scenes".)");
    }
    return {*scene, root.where.in("scene " + inQuotes(identifier)), root.context};
}

void checkSegues(const Scene& scene, const LayoutValue& scenes) {
    for (auto segue = scene.segues.begin(); segue != scene.segues.end(); ++segue) {
        const auto& [identifier, destination, kind] = segue->description;
        if (scenes.content.find(destination) == nullptr) {
            segue->where.fail("the destination " + inQuotes(destination) + " is no scene of this storyboard.");
        }
        const auto same = std::any_of(scene.segues.begin(), segue, [&](const ButtonSegue& other) {
            return other.description.identifier == segue->description.identifier;
        });
        if (same) {
            segue->where.fail("another segue of the scene has the identifier " + inQuotes(identifier) + " already.");
        }
    }
}

/// The class's name without its namespaces.
std::string className(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable{
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free};
    std::string name{readable ? readable.get() : type.name()};
    const auto colon = name.rfind(':');
    return colon == std::string::npos ? name : name.substr(colon + 1);
}

/// Fills a screen's outlets from its scene, and collects the actions that the scene's controls may call.
class Connections final : public Interface {
public:
    Connections(const Scene& scene, Where where)
        : scene_{scene}
        , where_{std::move(where)} {}

    void action(std::string_view name, Action action) override {
        actions_.insert_or_assign(std::string{name}, std::move(action));
    }

    /// Makes the scene's controls call the actions, for as long as the screen lives.
    void connectActions(const std::shared_ptr<ViewController>& screen) const {
        for (const auto& wanted : scene_.actions) {
            const auto found = actions_.find(wanted.action);
            if (found == actions_.end()) {
                std::string known;
                for (const auto& [name, action] : actions_) {
                    known += (known.empty() ? "" : ", ") + name;
                }
                wanted.where.fail("the screen has no action " + inQuotes(wanted.action) + "; it has " +
                                  (known.empty() ? "none" : known) + ".");
            }
            wanted.control->addAction(wanted.event,
                                      [weak = std::weak_ptr{screen}, action = found->second](const auto& sender) {
                                          if (const auto alive = weak.lock()) {
                                              action(sender);
                                          }
                                      });
        }
    }

protected:
    bool hasOutlet(std::string_view name) const override {
        return scene_.outlets.contains(name) || scene_.constraints.contains(name);
    }

    void connectView(std::string_view name, const std::type_info& wanted,
                     const std::function<bool(const std::shared_ptr<View>&)>& take) override {
        const auto found = scene_.outlets.find(name);
        if (found == scene_.outlets.end()) {
            where_.fail("no view has the outlet " + inQuotes(name) + "; give it to a " + className(wanted) + ".");
        }
        if (!take(found->second)) {
            const auto& view = *found->second;
            where_.fail("the view " + inQuotes(name) + " is a " + className(typeid(view)) +
                        " where the screen needs a " + className(wanted) + "; change its \"type\".");
        }
    }

    void connectConstraint(std::string_view name, std::shared_ptr<LayoutConstraint>& slot) override {
        const auto found = scene_.constraints.find(name);
        if (found == scene_.constraints.end()) {
            where_.fail("there is no constraint " + inQuotes(name) + R"(; add it to the scene's "constraints".)");
        }
        slot = found->second;
    }

private:
    const Scene& scene_;
    Where where_;
    std::map<std::string, Action, std::less<>> actions_;
};

void connectSegues(const Scene& scene, const std::shared_ptr<ViewController>& screen) {
    for (const auto& segue : scene.segues) {
        segue.button->addAction(ControlEvent::touchUpInside,
                                [weak = std::weak_ptr{screen}, identifier = segue.description.identifier](const auto&) {
                                    if (const auto alive = weak.lock()) {
                                        alive->performSegue(identifier);
                                    }
                                });
    }
}

} // namespace

Storyboard::Storyboard(std::unique_ptr<Contents> contents)
    : contents_{std::move(contents)} {}

Storyboard::~Storyboard() = default;

std::expected<std::shared_ptr<Storyboard>, std::string> Storyboard::open(std::string_view name,
                                                                         const std::shared_ptr<Bundle>& bundle) {
    const auto path = bundle ? bundle->pathForResource(name, "storyboard") : std::nullopt;
    const auto file = std::string{name} + ".storyboard";
    if (!path) {
        return std::unexpected{file + ": the bundle has no such resource; put the file into the bundle's folder."};
    }
    try {
        auto bytes = readWhole(*path);
        auto& last = LastOpened::ofProcess();
        if (last.is(path->string(), bundle, bytes)) {
            return last.storyboard;
        }
        auto contents = std::make_unique<Contents>(path->string(), bundle, parse(bytes, path->string()));
        const auto root = contents->rootValue();
        const auto scenes = scenesOf(root);
        scenes.eachMember([&](const std::string& identifier, const LayoutValue&) {
            checkSegues(readScene(sceneValue(root, identifier), Purpose::check), scenes);
        });
        last.storyboard = std::shared_ptr<Storyboard>{new Storyboard{std::move(contents)}};
        last.bytes = std::move(bytes);
        last.registrations = storyboard::registrations();
        return last.storyboard;
    } catch (const LayoutError& error) {
        return std::unexpected{error.what()};
    }
}

std::expected<std::shared_ptr<ViewController>, std::string> Storyboard::instantiate(std::string_view identifier) {
    try {
        const auto value = sceneValue(contents_->rootValue(), std::string{identifier});
        const auto scene = readScene(value, Purpose::use);
        auto screen = storyboard::makeScreen(scene.className);
        if (!screen) {
            value.where.fail("the class " + inQuotes(scene.className) + " made no screen; correct its factory.");
        }
        Connections connections{scene, value.where};
        screen->connect(connections);
        connections.connectActions(screen);
        connectSegues(scene, screen);
        screen->setModalPresentationStyle(scene.presentation);
        screen->navigationItem()->setTitle(scene.title);
        screen->storyboard_ = shared_from_this();
        screen->state_->storyboardView = scene.view;
        for (const auto& segue : scene.segues) {
            screen->state_->segues.push_back(segue.description);
        }
        return screen;
    } catch (const LayoutError& error) {
        return std::unexpected{error.what()};
    }
}

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
