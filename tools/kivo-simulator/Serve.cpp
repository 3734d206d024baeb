#include "Serve.hpp"

#include "Control.hpp"
#include "Interface.hpp"
#include "Lines.hpp"
#include "Records.hpp"
#include "WrittenFile.hpp"
#include "program/Program.hpp"
#include "program/Temporary.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>

namespace simulation {
namespace {

using kivo::simulator::IdentityService;
using Json = nlohmann::ordered_json;

/// A word for the shell.
std::string quoted(const std::string& text) {
    const auto isPlain = [](char each) {
        return std::isalnum(static_cast<unsigned char>(each)) != 0 || each == '/' || each == '-' || each == '_' ||
               each == '.';
    };
    if (std::ranges::all_of(text, isPlain)) {
        return text;
    }
    std::string word = "'";
    for (const char each : text) {
        word += each == '\'' ? "'\\''" : std::string{each};
    }
    return word + "'";
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

/// Prints what happens, for people or for machines.
class Output {
public:
    explicit Output(bool json)
        : json_{json} {}

    void begin(const IdentityService& service, const std::string& page, const std::string& code) {
        const auto certificate = service.trustedCertificates().string();
        const auto pins = service.pins();
        if (json_) {
            const Json start{{"type", "start"},
                             {"joinPage", service.joinPage()},
                             {"certificate", certificate},
                             {"pins", {{"leaf", pins.leaf}, {"intermediate", pins.intermediate}}},
                             {"page", page + "/"}};
            lines_.begin(lineOf(start));
            return;
        }
        lines_.begin("export KIVO_JOIN_PAGE=" + service.joinPage() + " KIVO_AUTHORITY=" + quoted(certificate) +
                     " KIVO_PIN=" + pins.leaf + " KIVO_ACTIVATION_CODE=" + code + " KIVO_SIMULATOR=" + page +
                     "\n  join page    " + service.joinPage() + "\n  certificate  " + certificate +
                     "\n  page         " + page + "/\n");
    }

    void request(const Json& record) {
        if (json_) {
            Json line{{"type", "request"}};
            line.update(record);
            print(line);
            return;
        }
        const auto text = [&](const char* member, const char* before) {
            const auto value = record.at(member).is_string() ? record.at(member).get<std::string>() : std::string{};
            return value.empty() ? value : before + program::printable(value);
        };
        constexpr std::size_t clockFrom = 11;
        constexpr std::size_t clockLength = 12;
        const auto status = record.at("status").is_null() ? "-" : std::to_string(record.at("status").get<int>());
        const auto endpoint = record.at("endpoint").is_null() ? "?" : text("endpoint", "");
        lines_.add(text("receivedAt", "").substr(clockFrom, clockLength) + "  " + padded(endpoint, 8) +
                   padded(status, 5) + padded(text("session", ""), 4) + text("fault", "  fault ") +
                   text("violation", "  breaks the protocol: ") + "\n");
    }

    void end(const Records& records) {
        if (json_) {
            print({{"type", "end"}, {"requests", records.count()}, {"violations", records.violations()}});
        } else {
            lines_.add(std::to_string(records.count()) + " requests, " + std::to_string(records.violations()) +
                       " of them broke the protocol\n");
        }
    }

private:
    static std::string lineOf(const Json& object) {
        return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    }

    void print(const Json& object) { lines_.add(lineOf(object)); }

    const bool json_;
    Lines lines_;
};

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::unique_ptr<IdentityService> makeService(const Options& options, const program::TemporaryFolder& folder) {
    return folder.holding([&] {
        kivo::simulator::IdentityServiceConfiguration configuration;
        configuration.activationCodes = options.codes;
        configuration.retryLimit = options.retryLimit;
        configuration.hostPerEndpoint = options.hostPerEndpoint;
        configuration.port = options.port;
        // The program keeps records of its own, which are bounded in bytes, too.
        configuration.mostRequests = 0;
        return std::make_unique<IdentityService>(configuration);
    });
}

} // namespace

int serve(const Options& options) {
    Output output{options.json};
    const program::EndingSignal signal;
    std::optional<WrittenFile> file;
    if (!options.records.empty()) {
        file.emplace(options.records, WrittenFile::Readers::owner);
    }
    Events events;
    Records records{events, [&](const Json& record) { output.request(record); }};
    const program::TemporaryFolder folder{"kivo-simulator"};
    auto service = makeService(options, folder);
    for (const auto& each : options.faults) {
        service->inject(each.endpoint, each.fault);
    }
    Interface interface{*service, records, events};
    // A host that knows the port may send a request before the first lines are printed.
    service->onRequest([&](const kivo::simulator::RecordedRequest& request) {
        records.add(request);
        if (request.endpoint == kivo::simulator::Endpoint::join && !request.session.empty()) {
            interface.publishSessions();
        }
    });
    service->onStray([&](const kivo::simulator::StrayRequest& request) { records.add(request); });
    {
        const Control control{interface, events, options.controlPort};
        std::optional<program::Temporary> certificate;
        if (!options.certificate.empty()) {
            WrittenFile{options.certificate, WrittenFile::Readers::all}.finish(
                contentOf(service->trustedCertificates()));
            certificate.emplace([&] { return std::filesystem::absolute(options.certificate); });
        }
        output.begin(*service, control.address(), options.codes.front());
        signal.wait();
    }
    const auto sessions = interface.sessions();
    // Ends the requests under way, which tell the records and the interface of themselves.
    service.reset();
    output.end(records);
    if (file) {
        auto text = records.list();
        text.replace(text.size() - 1, 1, "," + sessions.substr(1));
        file->finish(text + "\n");
    }
    return EXIT_SUCCESS;
}

} // namespace simulation
