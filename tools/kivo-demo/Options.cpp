#include "Options.hpp"

#include "PinnedBundle.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <string_view>

namespace demo {
namespace {

using namespace std::chrono_literals;
using kivo::simulator::CertificateFlaw;
using kivo::simulator::Endpoint;
using kivo::simulator::Fault;

struct NamedFault {
    std::string_view name;
    std::string_view meaning;
    Fault (*make)();
};

const std::array namedFaults{
    NamedFault{"slow", "answers half a second late", [] { return Fault::delay(500ms); }},
    NamedFault{"drop", "never answers (ends after the SDK's 60 s)", [] { return Fault::drop(); }},
    NamedFault{"reset", "resets the connection", [] { return Fault::reset(); }},
    NamedFault{"truncate", "sends less than it promised", [] { return Fault::truncate(); }},
    NamedFault{"garbage", "answers with bytes that are no HTTP", [] { return Fault::garbage(); }},
    NamedFault{"html", "answers 200 with a page instead of JSON",
               [] { return Fault::answer("<html>Sign in to this Wi-Fi</html>"); }},
    NamedFault{"empty", "answers 200 with an empty body", [] { return Fault::emptyBody(); }},
    NamedFault{"204", "answers 204 without a body", [] { return Fault::noBody(); }},
    NamedFault{"404", "answers 404", [] { return Fault::status(404); }},
    NamedFault{"500", "answers 500", [] { return Fault::status(500); }},
    NamedFault{"redirect", "redirects to a page that is not https",
               [] { return Fault::redirect("http://localhost/elsewhere"); }},
    NamedFault{"huge", "answers with 100 MiB", [] { return Fault::largeBody(std::size_t{100} * 1024 * 1024); }},
    NamedFault{"refuse", "refuses with STATUS_AUTH_FAILED", [] { return Fault::refuse("STATUS_AUTH_FAILED"); }},
    NamedFault{"expired", "presents an expired certificate",
               [] { return Fault::certificate(CertificateFlaw::expired); }},
    NamedFault{"wrong-host", "presents another host's certificate",
               [] { return Fault::certificate(CertificateFlaw::wrongHost); }},
    NamedFault{"self-signed", "presents a self-signed certificate",
               [] { return Fault::certificate(CertificateFlaw::selfSigned); }},
};

std::expected<InjectedFault, std::string> parseFault(const std::string& text) {
    const auto equals = text.find('=');
    const auto endpointName = text.substr(0, equals);
    const auto faultName = equals == std::string::npos ? std::string{} : text.substr(equals + 1);
    const auto endpoint = std::ranges::find(kivo::simulator::allEndpoints, endpointName,
                                            [](Endpoint each) { return kivo::simulator::name(each); });
    const auto fault = std::ranges::find(namedFaults, faultName, &NamedFault::name);
    if (endpoint == kivo::simulator::allEndpoints.end() || fault == namedFaults.end()) {
        return std::unexpected{"--fault takes ENDPOINT=FAULT, not \"" + text + "\""};
    }
    return InjectedFault{.endpoint = *endpoint, .name = faultName, .fault = fault->make()};
}

} // namespace

const ScreenOutcome* Options::outcomeOf(std::string_view screen) const {
    const auto found = std::ranges::find(outcomes, screen, &ScreenOutcome::screen);
    return found == outcomes.end() ? nullptr : &*found;
}

bool Options::withholds(std::string_view screen) const {
    const auto* const outcome = outcomeOf(screen);
    return version >= "18" && outcome != nullptr && outcome->isLeaving;
}

std::expected<Options, std::string> parse(const std::vector<std::string>& arguments) {
    Options options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto value = [&]() -> std::string { return argument + 1 == arguments.end() ? "" : *++argument; };
        if (*argument == "--version") {
            options.version = value();
            if (options.version != "all" && std::ranges::find(everyVersion, options.version) == everyVersion.end()) {
                return std::unexpected{"--version takes 14 to 18 or all, not \"" + options.version + "\""};
            }
        } else if (*argument == "--fault") {
            auto fault = parseFault(value());
            if (!fault) {
                return std::unexpected{fault.error()};
            }
            options.faults.push_back(std::move(*fault));
        } else if (*argument == "--outcome") {
            auto outcomes = parseOutcomes(value());
            if (!outcomes) {
                return std::unexpected{outcomes.error()};
            }
            options.outcomes = std::move(*outcomes);
        } else if (*argument == "--pin") {
            options.pin = value();
            if (std::ranges::find(pinChoices, options.pin, &PinChoice::name) == pinChoices.end()) {
                return std::unexpected{"--pin takes leaf, intermediate, other or empty, not \"" + options.pin + "\""};
            }
        } else if (*argument == "--screens") {
            options.screens = value();
            if (options.screens.empty()) {
                return std::unexpected{"--screens takes a folder"};
            }
        } else if (*argument == "--scan") {
            options.scan = true;
        } else if (*argument == "--scan-file") {
            options.scan = true;
            options.scanFile = value();
            if (!std::filesystem::is_regular_file(options.scanFile)) {
                return std::unexpected{"--scan-file takes a picture, and there is no file \"" + options.scanFile +
                                       "\""};
            }
        } else if (*argument == "--json") {
            options.json = true;
        } else if (*argument == "--log") {
            options.log = true;
        } else if (*argument == "--help" || *argument == "-h") {
            options.help = true;
        } else {
            return std::unexpected{"unknown option \"" + *argument + "\""};
        }
    }
    return options;
}

std::string usage() {
    std::string text =
        "usage: kivo-demo [options]\n"
        "\n"
        "Walks a verification session through libkivo against a simulated identity service on this\n"
        "machine, over real TLS, and prints every step.\n"
        "\n"
        "  --version NN           interface version to load, 14 to 18 (default 18), or \"all\" for one after another\n"
        "  --fault ENDPOINT=FAULT make an endpoint misbehave; may be repeated\n"
        "  --outcome SCREEN=CODE  end a vendor's screens with a failure; several with commas between\n"
        "  --pin WHICH            pin the service's leaf or intermediate, an other one, or empty (none)\n"
        "  --screens DIR          put a picture of every screen into that folder\n"
        "  --scan                 scan the right code from a QR code instead of typing it\n"
        "  --scan-file PICTURE    the same from a picture file (PNG or JPEG); the service knows the code 123456\n"
        "  --json                 one JSON object a step\n"
        "  --log                  show the SDK's debug log on standard error\n"
        "\n"
        "endpoints: join update status commit upload biodata facemap idScan\n"
        "faults:\n";
    for (const auto& each : namedFaults) {
        text.append("  ").append(each.name).append(15 - each.name.size(), ' ').append(each.meaning).append("\n");
    }
    text += "outcomes:\n";
    for (const auto& each : screenOutcomes()) {
        text.append("  ").append(each.screen).append("=").append(each.code).append("\n");
    }
    return text;
}

} // namespace demo
