#include "Trial.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

void isComplete(Trial& trial) {
    const auto all = trial.services();
    const std::pair<const char*, bool> rows[] = {
        {"mainQueue", all.mainQueue != nullptr},
        {"urlSessions", all.urlSessions != nullptr},
        {"trust", all.trust != nullptr},
        {"keychain", all.keychain != nullptr},
        {"reachability", all.reachability != nullptr},
        {"bundles", all.bundles != nullptr},
        {"device", all.device != nullptr},
        {"workspace", all.workspace != nullptr},
        {"diagnostics", all.diagnostics != nullptr},
        {"fonts", all.fonts != nullptr},
        {"camera", all.camera != nullptr},
    };
    for (const auto& [name, isThere] : rows) {
        trial.expect(isThere, std::string{name} + " is there");
    }
    trial.expect(!all.faceTec && !all.readID, "the vendors' libraries are left to the host");
}

bool isUuid(const std::string& text) {
    const std::string_view pattern = "HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH";
    return text.size() == pattern.size() && std::ranges::equal(text, pattern, [](char character, char wanted) {
               return wanted == '-' ? character == '-' : std::isxdigit(static_cast<unsigned char>(character)) != 0;
           });
}

void identifierStays(Trial& trial) {
    const auto services = trial.services();
    const auto first = required(services.device).identifierForVendor();
    if (!first) {
        trial.giveUp("the device has no identifier");
    }
    trial.expect(isUuid(*first), "an identifier that is a UUID, came " + shown(first));
    trial.expectEqual("the identifier asked for again", services.device->identifierForVendor(), first);
    trial.expectEqual("the identifier by new services", required(trial.services().device).identifierForVendor(), first);
}

void describesTheMachine(Trial& trial) {
    const auto services = trial.services();
    auto& device = required(services.device);
    trial.expect(!device.systemVersion().empty(), "a version of the system");
    trial.expect(!device.machine().empty(), "a name of the machine");
    trial.expectEqual("the version asked for again", device.systemVersion(), device.systemVersion());
    trial.expectEqual("the machine asked for again", device.machine(), device.machine());
}

void listsAddresses(Trial& trial) {
    const auto services = trial.services();
    const auto addresses = required(services.device).interfaceAddresses();
    if (addresses.empty()) {
        trial.giveUp("the device lists no addresses");
    }
    for (const auto& address : addresses) {
        trial.expect(!address.interfaceName.empty(), "a name for the interface of " + address.numericHost);
        const bool hasColon = address.numericHost.find(':') != std::string::npos;
        if (address.family == platform::AddressFamily::ipv4) {
            trial.expect(std::ranges::count(address.numericHost, '.') == 3, "four numbers in " + address.numericHost);
        }
        if (address.family != platform::AddressFamily::other) {
            trial.expectEqual("colons in " + address.numericHost, hasColon,
                              address.family == platform::AddressFamily::ipv6);
        }
    }
}

void opensQuietly(Trial& trial) {
    const auto services = trial.services();
    auto& workspace = required(services.workspace);
    // No text of these may open anything: the check runs on somebody's desk.
    for (const auto* text : {"", "-x", "javascript:alert(1)", "https:a.example", "https://", "a.example", "\n"}) {
        const auto start = steady_clock::now();
        workspace.open(text);
        trial.expect(steady_clock::now() - start < 2s, "open() returns at once for " + shown(std::string_view{text}));
    }
    const auto start = steady_clock::now();
    workspace.vibrate();
    trial.expect(steady_clock::now() - start < 2s, "vibrate() returns at once");
}

void knowsFonts(Trial& trial) {
    const auto services = trial.services();
    auto& fonts = required(services.fonts);
    for (const auto* name : {"", "No Such Typeface 5f2e"}) {
        trial.expect(!fonts.isInstalled(name), "no typeface of the name " + shown(std::string_view{name}));
    }
}

void measuresText(Trial& trial) {
    const auto services = trial.services();
    auto& fonts = required(services.fonts);
    const auto size = [&](std::string_view text, double points = 10, double limit = 10'000) {
        return fonts.measure(text, "", points, limit);
    };
    const auto line = size("").height;
    trial.expectEqual("the width of no text", size("").width, 0.0);
    trial.expect(line > 0, "a line's height for no text, came " + shown(line));
    trial.expectEqual("the height of a word", size("word").height, line);
    trial.expect(size("wordword").width > size("word").width, "two words wider than one");
    trial.expect(size("word", 20).width > size("word").width, "a larger size wider than a smaller one");
    trial.expect(size("word", 20).height > line, "a larger size higher than a smaller one");
    const double limit = size("word").width * 1.5;
    const auto broken = size("word word word", 10, limit);
    trial.expect(broken.width <= limit, "no line wider than " + shown(limit) + ", came " + shown(broken.width));
    trial.expectEqual("lines of three words at the width of one", std::lround(broken.height / line), 3L);
    trial.expectEqual("lines of two texts", std::lround(size("a\nb").height / line), 2L);
}

} // namespace

Checks servicesChecks() {
    return {{"Services", "are complete but for the vendors' libraries", isComplete}};
}

Checks deviceChecks() {
    return {
        {"Device", "keeps its identifier, a UUID, as long as its data", identifierStays},
        {"Device", "tells the system's version and the machine", describesTheMachine},
        {"Device", "lists addresses with their families", listsAddresses},
    };
}

Checks workspaceChecks() {
    return {{"Workspace", "returns at once and reports no failure", opensQuietly}};
}

Checks fontsChecks() {
    return {
        {"Fonts", "take no typeface for a missing one", knowsFonts},
        {"Fonts", "measure a text by its lines, its size and the width limit", measuresText},
    };
}

} // namespace kivo::check
