#include "Options.hpp"

#include "program/CommandLine.hpp"

#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/Url.hpp>
#include <kivo/simulator/FaultText.hpp>
#include <kivo/simulator/ScanScript.hpp>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <optional>
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

bool isPin(const std::string& text) {
    // The Base64 of a SHA-256 digest.
    constexpr std::size_t length = 44;
    return text.size() == length && text.ends_with('=');
}

std::string takePin(const std::string& text, Options& options) {
    options.pin = text;
    const auto* const found = std::ranges::find(pinChoices, text, &PinChoice::name);
    return found != pinChoices.end() || isPin(text)
               ? ""
               : "takes leaf, intermediate, other or empty, or a pin of 44 characters, not \"" + text + "\"";
}

std::string takeService(const std::string& text, Options& options) {
    options.service = text;
    const auto url = kivo::platform::parseUrl(text);
    return url && url->scheme == "https" ? "" : "takes the https address of a join page, not \"" + text + "\"";
}

std::string takeCertificates(const std::string& file, Options& options) {
    options.trusted = file;
    return access(file.c_str(), R_OK) == 0 ? "" : "takes a file of certificates, and \"" + file + "\" may not be read";
}

std::string takeCode(const std::string& text, Options& options) {
    options.code = text;
    constexpr std::size_t boxes = 6;
    return text.size() == boxes ? "" : "takes the six characters of the screen's boxes, not \"" + text + "\"";
}

/// The number that is all of `text`, if the number lies between two others.
std::optional<int> numberIn(std::string_view text, int least, int most) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc{} && end == text.data() + text.size();
    return isWhole && number >= least && number <= most ? std::optional{number} : std::nullopt;
}

std::string takeDisplay(const std::string& text, Options& options) {
    constexpr int least = 200;
    constexpr int most = 2000;
    const auto cross = std::min(text.find('x'), text.size());
    const auto width = numberIn(std::string_view{text}.substr(0, cross), least, most);
    const auto height = numberIn(std::string_view{text}.substr(std::min(cross + 1, text.size())), least, most);
    if (!width || !height) {
        return "takes a size in points, from 200x200 to 2000x2000, not \"" + text + "\"";
    }
    options.display = {.width = static_cast<double>(*width), .height = static_cast<double>(*height)};
    return "";
}

std::string takeReadingSize(const std::string& text, Options& options) {
    using kivo::platform::ContentSizeCategory;
    using Sizes = kivo::RawValues<ContentSizeCategory>;
    const auto size = numberIn(text, Sizes::first, Sizes::last);
    if (!size) {
        return "takes a number from 0 (extra small) over 3 (as designed) to 11, not \"" + text + "\"";
    }
    options.readingSize = static_cast<ContentSizeCategory>(*size);
    return "";
}

/// The first option that does not fit to the others, as a sentence; empty where all fit.
std::string contradiction(const Options& options, bool hasCode) {
#ifndef KIVO_DEMO_HAS_READER
    if (options.chip) {
        return "--chip needs the document reader, which is built where its libraries are installed (./dev setup)";
    }
#endif
    if (options.chip && options.outcomeOf("document") != nullptr) {
        return "--outcome document=... ends the simulated vendor's screens; --chip shows those of the document reader";
    }
    const bool namesOwnPin = options.pin == "leaf" || options.pin == "intermediate";
    if (options.service.empty()) {
        if (isPin(options.pin)) {
            return "a pin itself belongs to --service; the demo's own service takes --pin leaf";
        }
        return !options.trusted.empty() ? "--cacert belongs to --service"
               : hasCode                ? "--code belongs to --service"
                                        : "";
    }
    if (!options.faults.empty()) {
        return "--fault makes the demo's own service misbehave; give it to the program behind --service";
    }
    return namesOwnPin ? "--service needs the pin itself: --pin PIN" : "";
}

void addRow(std::string& text, std::string_view name, std::string_view meaning) {
    constexpr std::size_t column = 15;
    text.append("  ").append(name).append(column - name.size(), ' ').append(meaning).append("\n");
}

/// The values of the options, for the help.
std::string choices() {
    auto text = kivo::simulator::faultChoices();
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
    bool hasCode = false;

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
    line.value("--pin", "WHICH", "list pins in the host's bundle, as below;\nwith --service the pin itself",
               [&](const auto& value) { return takePin(value, options); });
    line.value("--service", "URL", "walk against a running service with this join page,\nsuch as kivo-simulator's",
               [&](const auto& value) { return takeService(value, options); });
    line.value("--cacert", "FILE", "certificates that the host trusts, with --service\n(default: the system's)",
               [&](const auto& value) { return takeCertificates(value, options); });
    line.value("--code", "CODE", "activation code that joins, with --service\n(default 123456)",
               [&](const auto& value) {
                   hasCode = true;
                   return takeCode(value, options);
               });
    line.value("--screens", "DIR",
               "put a picture of every screen into that folder, and the\ncontrasts of the texts (contrast.txt)",
               [&](const auto& value) {
                   options.screens = value;
                   return std::string{};
               });
    line.value("--display", "WxH", "the phone's display in the pictures, in points (default 390x844)",
               [&](const auto& value) { return takeDisplay(value, options); });
    line.value("--reading-size", "N", "the person's reading size, from 0 over 3 (default) to 11",
               [&](const auto& value) { return takeReadingSize(value, options); });
    line.flag("--dark", options.isDark, "the dark appearance");
    line.flag("--chip", options.chip,
              "read the passport with the document reader, from a simulated chip on a\ncard reader");
    line.flag("--scan", options.scan, "scan the right code from a QR code instead of typing it");
    line.value("--scan-file", "PICTURE",
               "the same from a picture file (PNG or JPEG);\nthe demo's own service knows the code 123456",
               [&](const auto& value) { return takePicture(value, options); });
    line.flag("--json", options.json, "one JSON object a line: for each step, each session, and the whole");
    line.flag("--log", options.log, "show the SDK's debug log on standard error");
    line.explain(choices());
    if (const auto status = line.read(argc, argv)) {
        return std::unexpected{*status};
    }
    if (const auto mistake = contradiction(options, hasCode); !mistake.empty()) {
        return std::unexpected{line.refuse(mistake)};
    }
    return options;
}

} // namespace demo
