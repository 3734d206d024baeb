#include "BiodataEndpoint.hpp"

#include "ProtocolCheck.hpp"
#include "SealedData.hpp"

#include <algorithm>
#include <array>

namespace kivo::simulator {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array documentTypes{"passport", "identityCardTD1", "identityCardTD2"};

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

void requireDocument(Json document) {
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

std::string BiodataEndpoint::receive(const std::string& session, std::string_view accessKey, std::string_view body) {
    if (accessKey != sessionAccessKey) {
        throw Violation{.text = "the access key is not the session's", .httpStatus = 401};
    }
    const auto json = parsed(body);
    requireTexts(json, "the reading", {"sealed"});
    const auto document = unseal(sessionEncryptKey, json.at("sealed").get<std::string>());
    if (!document) {
        throw Violation{"the reading is not encrypted with the session's key"};
    }
    requireDocument(parsed(*document));
    const std::scoped_lock lock{mutex_};
    auto& readings = readings_[session];
    const auto name = "reading-" + session + "-" + std::to_string(readings.size() + 1);
    readings.insert(name);
    return Json{{"sessionId", name}}.dump();
}

void BiodataEndpoint::requireNotice(const std::string& session, const std::string& tid, const Json& notice) const {
    requireTexts(notice, "the notice", {"opaqueId", "sessionId"});
    if (notice.at("opaqueId") != tid) {
        throw Violation{"the notice has an \"opaqueId\" that is not the session's transaction"};
    }
    const std::scoped_lock lock{mutex_};
    const auto readings = readings_.find(session);
    if (readings == readings_.end() || !readings->second.contains(notice.at("sessionId").get<std::string>())) {
        throw Violation{"the notice has a \"sessionId\" that the document proxy has not given out"};
    }
}

} // namespace kivo::simulator
