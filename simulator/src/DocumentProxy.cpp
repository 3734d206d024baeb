#include "DocumentProxy.hpp"

#include "Cryptography.hpp"

#include <algorithm>
#include <array>
#include <optional>

namespace kivo::simulator {
namespace {

using Json = nlohmann::ordered_json;

// What the proxy remembers.
constexpr std::size_t mostReadings = 100;
constexpr std::size_t mostSessionsWithReadings = 10'000;

constexpr std::array documentTypes{"passport", "identityCardTD1", "identityCardTD2"};

/// The forms of a document that `ReadID` sends, whose chip holds nothing to verify.
void requirePage(const Json& page) {
    const auto lines = page.is_object() && page.size() == 1 ? page.find("mrz") : page.end();
    if (lines == page.end() || !lines->is_array() || lines->empty() ||
        !std::ranges::all_of(*lines, [](const Json& line) { return line.is_string(); })) {
        throw Violation{R"(the document's "page" holds no list of lines under "mrz")"};
    }
}

void requireChip(const Json& chip) {
    requireTexts(chip, "the document's \"chip\"", {"DG1", "DG2", "SOD"});
    for (const auto& [name, group] : chip.items()) {
        if (!bytesOfBase64(group.get<std::string>())) {
            throw Violation{"the document's \"" + name + "\" is no base64"};
        }
    }
}

void requireSpecimen(Json document) {
    if (!document.is_object() || (!document.contains("page") && !document.contains("chip"))) {
        throw Violation{R"(the document has neither "page" nor "chip")"};
    }
    if (document.contains("page")) {
        requirePage(document.at("page"));
    }
    if (document.contains("chip")) {
        requireChip(document.at("chip"));
    }
    document.erase("page");
    document.erase("chip");
    requireTexts(document, "the document", {"document-type"});
    if (std::ranges::find(documentTypes, document.at("document-type")) == documentTypes.end()) {
        throw Violation{"the document has an unknown \"document-type\""};
    }
}

} // namespace

DocumentProxy::DocumentProxy(const IdentityServiceConfiguration& configuration)
    : key_{configuration.documentEncryption}
    , check_{configuration.countries, configuration.wallClock} {}

std::string DocumentProxy::receive(const std::string& session, const ServiceRequest& request) {
    if (request.accessKey != sessionAccessKey) {
        throw Violation{.text = "the access key is not the session's", .httpStatus = 401};
    }
    const auto document = documentIn(parsed(request.body));
    const std::scoped_lock lock{mutex_};
    if (readings_.size() == mostSessionsWithReadings && !readings_.contains(session)) {
        readings_.erase(readings_.begin());
    }
    auto& readings = readings_[session];
    auto name = "reading-" + session + "-" + std::to_string(++readings.count);
    readings.names.push_back(name);
    if (readings.names.size() > mostReadings) {
        readings.names.pop_front();
    }
    return Json{{"sessionId", std::move(name)}}.dump();
}

/// The document that a request holds, judged.
Json DocumentProxy::documentIn(const Json& request) const {
    constexpr auto sealedCms = "sealed-cms";
    if (request.is_object() && request.contains(sealedCms)) {
        requireTexts(request, "the reading", {sealedCms});
        const auto message = bytesOfBase64(request.at(sealedCms).get<std::string>());
        const auto plain = message ? key_.opened(*message) : std::nullopt;
        if (!plain) {
            throw Violation{"the reading is no CMS message for the session's key"};
        }
        auto document = parsed(*plain);
        check_.require(document);
        return document;
    }
    if (encryptKey().empty() && request.is_object() && request.contains("document-type")) {
        check_.require(request);
        return request;
    }
    requireTexts(request, "the reading", {"sealed"});
    const auto plain = unseal(encryptKey(), request.at("sealed").get<std::string>());
    if (!plain) {
        throw Violation{"the reading is not encrypted with the session's key"};
    }
    auto document = parsed(*plain);
    requireSpecimen(document);
    return document;
}

void DocumentProxy::requireNotice(const std::string& session, const std::string& tid, const Json& notice) const {
    requireTexts(notice, "the notice", {"opaqueId", "sessionId"});
    if (notice.at("opaqueId") != tid) {
        throw Violation{"the notice has an \"opaqueId\" that is not the session's transaction"};
    }
    const std::scoped_lock lock{mutex_};
    const auto readings = readings_.find(session);
    if (readings == readings_.end() ||
        std::ranges::find(readings->second.names, notice.at("sessionId").get<std::string>()) ==
            readings->second.names.end()) {
        throw Violation{"the notice has a \"sessionId\" that the document proxy has not given out"};
    }
}

} // namespace kivo::simulator
