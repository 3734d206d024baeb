#include "platform/posix/ReadFile.hpp"
#include "platform/ui/ViewControllerState.hpp"
#include "platform/ui/storyboard/Classes.hpp"
#include "platform/ui/storyboard/Connections.hpp"
#include "platform/ui/storyboard/Scene.hpp"

#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kivo::platform {

using storyboard::ButtonSegue;
using storyboard::Connections;
using storyboard::inQuotes;
using storyboard::LayoutError;
using storyboard::Scene;
using storyboard::Value;
using storyboard::Where;

struct Storyboard::Contents {
    std::string file;
    std::shared_ptr<Bundle> bundle;
    json::Value root;

    Value rootValue() const { return {root, Where{file}, *bundle}; }
};

namespace {

/// A tree of views as deep as one may be has two levels a view, and some around it.
constexpr json::Limits limits{.bytes = largestFile, .depth = 256, .members = 200'000, .comments = true};

/// A scene of the file, read but for its connections to a screen.
struct ReadScene {
    std::string className{};
    std::string title{};
    ModalPresentationStyle presentation = ModalPresentationStyle::automatic;
    Scene views{};
    Connections::Constraints constraints{};
};

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

void readConstraints(const Value& value, ReadScene& scene) {
    value.eachMember([&](const std::string& name, const Value& constraint) {
        const auto outlet = constraint.member("view").name();
        const auto view = scene.views.outlets.find(outlet);
        if (view == scene.views.outlets.end()) {
            constraint.where.fail("no view of the scene has the outlet " + inQuotes(outlet) + ".");
        }
        using enum LayoutConstraint::Attribute;
        const auto attribute =
            constraint.member("dimension").choice<LayoutConstraint::Attribute>({{"width", width}, {"height", height}});
        scene.constraints.emplace(name, std::make_shared<LayoutConstraint>(view->second, attribute));
    });
}

enum class Purpose { check, use };

ReadScene readScene(const Value& value, Purpose purpose) {
    ReadScene scene;
    scene.views.isTrial = purpose == Purpose::check;
    scene.className = value.member("class").name();
    if (!storyboard::isScreenClass(scene.className)) {
        value.where.fail("there is no screen class " + inQuotes(scene.className) + "; use one of " +
                         storyboard::knownScreens() + ", or register the class before the storyboard is opened.");
    }
    scene.views.view = storyboard::buildView(value.member("view"), scene.views);
    value.eachMember([&](const std::string& name, const Value& member) {
        if (name == "title") {
            scene.title = member.text();
        } else if (name == "presentation") {
            using enum ModalPresentationStyle;
            scene.presentation =
                member.choice<ModalPresentationStyle>({{"automatic", automatic}, {"fullScreen", fullScreen}});
        } else if (name == "constraints") {
            readConstraints(member, scene);
        } else if (name != "class" && name != "view") {
            member.where.fail("a scene has no such member; it has class, title, presentation, view and constraints.");
        }
    });
    return scene;
}

Value scenesOf(const Value& root) {
    root.eachMember([](const std::string& name, const Value& member) {
        if (name != "scenes") {
            member.where.fail("a storyboard has no such member; it has \"scenes\".");
        }
    });
    return root.member("scenes");
}

Value sceneValue(const Value& root, const std::string& identifier) {
    const auto scenes = scenesOf(root);
    const auto* const scene = scenes.content.find(identifier);
    if (scene == nullptr) {
        root.where.fail("there is no scene " + inQuotes(identifier) + R"(; add it to "scenes".)");
    }
    return {*scene, root.where.in("scene " + inQuotes(identifier)), root.bundle};
}

void checkSegues(const Scene& scene, const Value& scenes) {
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
        auto contents = std::make_unique<Contents>(path->string(), bundle, parse(readWhole(*path), path->string()));
        const auto root = contents->rootValue();
        const auto scenes = scenesOf(root);
        scenes.eachMember([&](const std::string& identifier, const Value&) {
            checkSegues(readScene(sceneValue(root, identifier), Purpose::check).views, scenes);
        });
        return std::shared_ptr<Storyboard>{new Storyboard{std::move(contents)}};
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
        Connections connections{scene.views, scene.constraints, value.where};
        screen->connect(connections);
        connections.connectActions(screen);
        connectSegues(scene.views, screen);
        screen->setModalPresentationStyle(scene.presentation);
        screen->navigationItem()->setTitle(scene.title);
        screen->storyboard_ = shared_from_this();
        screen->state_->storyboardView = scene.views.view;
        for (const auto& segue : scene.views.segues) {
            screen->state_->segues.push_back(segue.description);
        }
        return screen;
    } catch (const LayoutError& error) {
        return std::unexpected{error.what()};
    }
}

} // namespace kivo::platform
