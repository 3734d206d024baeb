#include "Options.hpp"

#include "program/CommandLine.hpp"

#include <kivo/platform/ReadID.hpp>
#include <kivo/simulator/ScanScript.hpp>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <system_error>

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

std::string takeFault(const std::string& text, std::vector<InjectedFault>& taken) {
    const auto equals = text.find('=');
    const auto endpointName = text.substr(0, equals);
    const auto faultName = equals == std::string::npos ? std::string{} : text.substr(equals + 1);
    const auto endpoint = std::ranges::find(kivo::simulator::allEndpoints, endpointName,
                                            [](Endpoint each) { return kivo::simulator::name(each); });
    const auto& faults = kivo::simulator::namedFaults();
    const auto fault = std::ranges::find(faults, faultName, &kivo::simulator::NamedFault::name);
    if (endpoint == kivo::simulator::allEndpoints.end() || fault == faults.end()) {
        return "takes ENDPOINT=FAULT as --help lists them, not \"" + text + "\"";
    }
    taken.push_back({.endpoint = *endpoint, .name = fault->name, .fault = fault->fault});
    return "";
}

/// Takes a list such as "document=NO_CHIP,face=TIMEOUT".
std::string takeOutcomes(const std::string& list, Options& options) {
    std::istringstream items{list};
    for (std::string item; std::getline(items, item, ',');) {
        const auto* const found = std::ranges::find_if(outcomes, [&](const ScreenOutcome& each) {
            return item == std::string{each.screen}.append("=").append(each.code);
        });
        if (found == outcomes.end()) {
            return "takes SCREEN=CODE as --help lists them, not \"" + item + "\"";
        }
        if (options.outcomeOf(found->screen) != nullptr) {
            return "names " + std::string{found->screen} + " twice; a screen ends in one way";
        }
        options.outcomes.push_back(*found);
    }
    return "";
}

std::string takePicture(const std::string& file, Options& options) {
    options.scan = true;
    options.scanFile = file;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return "takes a picture, and \"" + file + "\" is no file" + (error ? " (" + error.message() + ")" : "");
    }
    return access(file.c_str(), R_OK) == 0 ? "" : "takes a picture, and \"" + file + "\" may not be read";
}

void addRow(std::string& text, std::string_view name, std::string_view meaning) {
    constexpr std::size_t column = 15;
    text.append("  ").append(name).append(column - name.size(), ' ').append(meaning).append("\n");
}

/// The values of the options, for the help.
std::string choices() {
    std::string text = "endpoints:";
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

} // namespace

const ScreenOutcome* Options::outcomeOf(std::string_view screen) const {
    const auto found = std::ranges::find(outcomes, screen, &ScreenOutcome::screen);
    return found == outcomes.end() ? nullptr : &*found;
}

bool Options::withholds(std::string_view screen) const {
    const auto* const outcome = outcomeOf(screen);
    return version >= "18" && outcome != nullptr && outcome->isLeaving;
}

std::expected<Options, int> parse(int argc, const char* const* argv) {
    Options options;
    std::vector<std::string> versions{SdkVersions::all().begin(), SdkVersions::all().end()};
    versions.emplace_back("all");
    std::vector<std::string> pins;
    std::ranges::for_each(pinChoices, [&](const auto& each) { pins.emplace_back(each.name); });

    program::CommandLine line{{.name = "kivo-demo",
                               .arguments = "[options]",
                               .purpose = "Walks a verification session through libkivo against a simulated identity "
                                          "service on this\nmachine, over real TLS, and prints every step.\n",
                               .statuses = {{0, "every step ended as expected"},
                                            {1, "a step did not, or the report or a picture could not be written"},
                                            {2, "the command line is wrong"}}}};
    line.value("--version", "NN",
               "interface version to load: " + program::listed(versions) + " (default " + options.version + ")",
               program::oneOf(versions, options.version));
    line.value(
        "--fault", "ENDPOINT=FAULT", "make an endpoint misbehave; may be repeated",
        [&](const auto& value) { return takeFault(value, options.faults); }, program::CommandLine::Times::any);
    line.value(
        "--outcome", "SCREEN=CODE",
        "end a vendor's screens with a failure; may be repeated,\nor several with commas between",
        [&](const auto& value) { return takeOutcomes(value, options); }, program::CommandLine::Times::any);
    line.value("--pin", "WHICH", "list pins in the host's bundle, as below", program::oneOf(pins, options.pin));
    line.value("--screens", "DIR", "put a picture of every screen into that folder", [&](const auto& value) {
        options.screens = value;
        return std::string{};
    });
    line.flag("--scan", options.scan, "scan the right code from a QR code instead of typing it");
    line.value("--scan-file", "PICTURE",
               "the same from a picture file (PNG or JPEG);\nthe service knows the code 123456",
               [&](const auto& value) { return takePicture(value, options); });
    line.flag("--json", options.json, "one JSON object a line: for each step, each session, and the whole");
    line.flag("--log", options.log, "show the SDK's debug log on standard error");
    line.explain(choices());
    if (const auto status = line.read(argc, argv)) {
        return std::unexpected{*status};
    }
    return options;
}

} // namespace demo
