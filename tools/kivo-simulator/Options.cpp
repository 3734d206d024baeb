#include "Options.hpp"

#include "program/CommandLine.hpp"

#include <kivo/platform/Url.hpp>
#include <kivo/simulator/FaultText.hpp>

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>

namespace simulation {
namespace {

using kivo::simulator::Endpoint;

program::CommandLine::Take number(int least, int most, std::function<void(int)> use) {
    return [=](const std::string& text) -> std::string {
        int value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc{} || end != text.data() + text.size() || value < least || value > most) {
            return "takes a number from " + std::to_string(least) + " to " + std::to_string(most) + ", not \"" + text +
                   "\"";
        }
        use(value);
        return "";
    };
}

program::CommandLine::Take text(std::string& target) {
    return [&target](const std::string& value) {
        target = value;
        return std::string{};
    };
}

std::string takeFault(const std::string& text, std::vector<InjectedFault>& taken) {
    const auto equals = text.find('=');
    const auto endpoint = std::ranges::find(kivo::simulator::allEndpoints, std::string_view{text}.substr(0, equals),
                                            [](Endpoint each) { return kivo::simulator::name(each); });
    if (equals == std::string::npos || endpoint == kivo::simulator::allEndpoints.end()) {
        return "takes ENDPOINT=FAULT as --help lists them, not \"" + text + "\"";
    }
    const auto fault = kivo::simulator::faultFromText(std::string_view{text}.substr(equals + 1));
    if (!fault) {
        return fault.error();
    }
    taken.push_back({.endpoint = *endpoint, .fault = *fault});
    return "";
}

std::string takeUrl(const std::string& text, std::string& target) {
    target = text;
    const auto url = kivo::platform::parseUrl(text);
    return url && text.starts_with("https://") ? "" : "takes an https address, not \"" + text + "\"";
}

std::string takeReadable(const std::string& file, std::string& target) {
    target = file;
    return access(file.c_str(), R_OK) == 0 ? "" : "takes a file of certificates, and \"" + file + "\" may not be read";
}

std::string choices() {
    return kivo::simulator::faultChoices() +
           "  or with a value: delay:2s, slow-body:250ms, slow-reader:65536, huge:2000000, status:503,\n"
           "  redirect:URL, refuse:NAME, answer:TEXT; another-scan of a scan\n";
}

/// The first option that does not fit to the others, as a sentence.
std::string contradiction(const Options& options) {
    const bool checks = !options.checked.empty();
    if (!checks && !options.trusted.empty()) {
        return "--cacert belongs to --check-service";
    }
    if (!checks) {
        return "";
    }
    if (options.codes.size() != 1) {
        return "--check-service needs one --code, which the service lets join";
    }
    const bool serves = options.port != 0 || options.controlPort != 0 || !options.faults.empty() ||
                        options.hostPerEndpoint || !options.certificate.empty() || !options.records.empty();
    return serves
               ? "--check-service checks another service, and takes --code, --key, --cacert, --timeout and --json only"
               : "";
}

} // namespace

std::string problemOfCode(const std::string& text) {
    constexpr std::size_t longest = 64;
    const bool isCode = !text.empty() && text.size() <= longest && std::ranges::all_of(text, [](char each) {
        return std::isalnum(static_cast<unsigned char>(each)) != 0 || each == '-' || each == '_';
    });
    return isCode ? "" : "takes at most 64 letters, digits, \"-\" and \"_\", not \"" + text + "\"";
}

std::expected<Options, int> parse(int argc, const char* const* argv) {
    Options options;
    program::CommandLine line{
        {.name = "kivo-simulator",
         .arguments = "[options]",
         .purpose =
             "Serves the identity service on this machine, for hosts in any language, with a page for a browser,\n"
             "until a signal ends the program; or checks another service.\n",
         .statuses = {{0, "ended as asked for; the checked service keeps the protocol"},
                      {1, "something could not be done; the checked service breaks the protocol"},
                      {2, "the command line is wrong"}}}};
    constexpr int mostPorts = 65535;
    line.value("--port", "N", "port of the service (default: a free one)",
               number(1, mostPorts, [&](int value) { options.port = value; }));
    line.value("--control-port", "N", "port of the page and of the control interface\n(default: a free one)",
               number(1, mostPorts, [&](int value) { options.controlPort = value; }));
    line.value(
        "--code", "CODE", "let an activation code join; may be repeated (default 123456)",
        [&](const auto& value) {
            options.codes.push_back(value);
            return problemOfCode(value);
        },
        program::CommandLine::Times::any);
    line.value(
        "--fault", "ENDPOINT=FAULT", "make an endpoint misbehave; may be repeated",
        [&](const auto& value) { return takeFault(value, options.faults); }, program::CommandLine::Times::any);
    line.value("--retry-limit", "N", "the attempts that a session allows (default 9)",
               number(0, 1'000'000, [&](int value) { options.retryLimit = value; }));
    line.flag("--host-per-endpoint", options.hostPerEndpoint,
              "give every endpoint a host name of its own (update.localhost)");
    line.value("--certificate", "FILE", "put the authority's certificate into that file, too",
               text(options.certificate));
    line.value("--records", "FILE", "write the records into that file at the end", text(options.records));
    line.flag("--json", options.json, "print one JSON object a line");
    line.value("--check-service", "URL", "check the service with this join page; needs --code",
               [&](const auto& value) { return takeUrl(value, options.checked); });
    line.value("--cacert", "FILE", "certificates that --check-service trusts (default: the system's)",
               [&](const auto& value) { return takeReadable(value, options.trusted); });
    line.value("--key", "KEY", "the host's key in the join of --check-service\n(default EXAMPLE-KEY)",
               text(options.key));
    line.value("--timeout", "SECONDS", "how long --check-service waits for each answer (default 10)",
               number(1, 60, [&](int value) { options.timeout = std::chrono::seconds{value}; }));
    line.explain(choices());
    if (const auto status = line.read(argc, argv)) {
        return std::unexpected{*status};
    }
    if (const auto mistake = contradiction(options); !mistake.empty()) {
        return std::unexpected{line.refuse(mistake)};
    }
    if (options.codes.empty()) {
        options.codes.emplace_back("123456");
    }
    return options;
}

} // namespace simulation
