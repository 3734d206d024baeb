#include "Options.hpp"

#include <kivo/platform/ReadID.hpp>
#include <kivo/simulator/ScanScript.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <string_view>

namespace demo {
namespace {

using kivo::SdkVersions;
using kivo::simulator::Endpoint;
namespace face = kivo::simulator::faceScanStatus;
namespace idCard = kivo::simulator::idScanStatus;
using kivo::platform::readid::FailureReason;

constexpr ScreenOutcome ofDocument(std::string_view code, FailureReason reason, bool isLeaving = false) {
    return {.screen = "document", .code = code, .status = static_cast<int>(reason), .isLeaving = isLeaving};
}

constexpr std::array outcomes{
    ofDocument("USER_CANCELLED", FailureReason::userCancelled, /*isLeaving=*/true),
    ofDocument("BACK_NAVIGATION", FailureReason::backNavigation, /*isLeaving=*/true),
    ofDocument("NO_CHIP", FailureReason::noChip),
    ofDocument("NFC_ERROR", FailureReason::nfcError),
    ofDocument("NFC_ACCESS_CONTROL_ERROR", FailureReason::nfcAccessControlError),
    ofDocument("WRONG_DOCUMENT_TYPE", FailureReason::wrongDocumentType),
    ofDocument("UNSUPPORTED_DOCUMENT", FailureReason::unsupportedDocument),
    ofDocument("VIZ_CAPTURE_TIMEOUT", FailureReason::vizCaptureTimeout),
    ofDocument("BACKGROUND_TIMEOUT", FailureReason::backgroundTimeout),
    ofDocument("CAMERA_PERMISSION_DENIED", FailureReason::cameraPermissionDenied),
    ScreenOutcome{"face", "SESSION_UNSUCCESSFUL", face::unsuccessful},
    ScreenOutcome{"face", "CANCELLED", face::cancelled, /*isLeaving=*/true},
    ScreenOutcome{"face", "CAMERA_PERMISSION_ERROR", face::cameraRefused},
    ScreenOutcome{"face", "CONTEXT_SWITCH", face::contextSwitch},
    ScreenOutcome{"face", "LANDSCAPE_MODE_NOT_ALLOWED", face::landscapeMode},
    ScreenOutcome{"face", "TIMEOUT", face::timeout},
    ScreenOutcome{"face", "LOCKED_OUT", face::lockedOut},
    ScreenOutcome{"idcard", "OCR_SCAN_FAILED", idCard::unsuccessful},
    ScreenOutcome{"idcard", "CANCELLED", idCard::cancelled},
    ScreenOutcome{"idcard", "TIMEOUT", idCard::timeout},
    ScreenOutcome{"idcard", "CONTEXT_SWITCH", idCard::contextSwitch},
    ScreenOutcome{"idcard", "CAMERA_PERMISSION_DENIED", idCard::cameraRefused},
};

/// The versions in words, such as "14, 15 or all".
std::string versionsOrAll() {
    std::string text;
    for (const auto version : SdkVersions::all()) {
        text.append(text.empty() ? "" : ", ").append(version);
    }
    return text + " or all";
}

std::expected<InjectedFault, std::string> parseFault(const std::string& text) {
    const auto equals = text.find('=');
    const auto endpointName = text.substr(0, equals);
    const auto faultName = equals == std::string::npos ? std::string{} : text.substr(equals + 1);
    const auto endpoint = std::ranges::find(kivo::simulator::allEndpoints, endpointName,
                                            [](Endpoint each) { return kivo::simulator::name(each); });
    const auto& faults = kivo::simulator::namedFaults();
    const auto fault = std::ranges::find(faults, faultName, &kivo::simulator::NamedFault::name);
    if (endpoint == kivo::simulator::allEndpoints.end() || fault == faults.end()) {
        return std::unexpected{"--fault takes ENDPOINT=FAULT as listed below, not \"" + text + "\""};
    }
    return InjectedFault{.endpoint = *endpoint, .name = fault->name, .fault = fault->fault};
}

/// Reads a list such as "document=NO_CHIP,face=TIMEOUT".
std::expected<std::vector<ScreenOutcome>, std::string> parseOutcomes(const std::string& list) {
    std::vector<ScreenOutcome> wanted;
    std::istringstream items{list};
    for (std::string item; std::getline(items, item, ',');) {
        const auto* const found = std::ranges::find_if(outcomes, [&](const ScreenOutcome& each) {
            return item == std::string{each.screen}.append("=").append(each.code);
        });
        if (found == outcomes.end()) {
            return std::unexpected{"--outcome takes SCREEN=CODE as listed below, not \"" + item + "\""};
        }
        wanted.push_back(*found);
    }
    return wanted;
}

void addRow(std::string& text, std::string_view name, std::string_view meaning) {
    constexpr std::size_t column = 15;
    text.append("  ").append(name).append(column - name.size(), ' ').append(meaning).append("\n");
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
            const auto known = SdkVersions::all();
            if (options.version != "all" && std::ranges::find(known, options.version) == known.end()) {
                return std::unexpected{"--version takes " + versionsOrAll() + ", not \"" + options.version + "\""};
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
        "  --version NN           interface version to load: " +
        versionsOrAll() + " (default " + Options{}.version +
        ")\n"
        "  --fault ENDPOINT=FAULT make an endpoint misbehave; may be repeated\n"
        "  --outcome SCREEN=CODE  end a vendor's screens with a failure; several with commas between\n"
        "  --pin WHICH            list pins in the host's bundle, as below\n"
        "  --screens DIR          put a picture of every screen into that folder\n"
        "  --scan                 scan the right code from a QR code instead of typing it\n"
        "  --scan-file PICTURE    the same from a picture file (PNG or JPEG); the service knows the code 123456\n"
        "  --json                 one JSON object a step\n"
        "  --log                  show the SDK's debug log on standard error\n"
        "\n"
        "endpoints:";
    for (const auto endpoint : kivo::simulator::allEndpoints) {
        text.append(" ").append(kivo::simulator::name(endpoint));
    }
    text += "\nfaults:\n";
    for (const auto& each : kivo::simulator::namedFaults()) {
        addRow(text, each.name, each.meaning);
    }
    text += "pins:\n";
    for (const auto& each : pinChoices) {
        addRow(text, each.name, each.meaning);
    }
    text += "outcomes:\n";
    for (const auto& each : outcomes) {
        text.append("  ").append(each.screen).append("=").append(each.code).append("\n");
    }
    return text;
}

} // namespace demo
