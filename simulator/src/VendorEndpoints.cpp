#include "VendorEndpoints.hpp"

#include "Cryptography.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>

namespace kivo::simulator {
namespace {

using Json = nlohmann::ordered_json;

/// A member of a scan's body.
struct Member {
    const char* name;
    bool isRequired;
    bool isBase64 = true;
};

constexpr std::initializer_list<Member> faceMembers{
    {.name = "faceScan", .isRequired = false},
    {.name = "auditTrailImage", .isRequired = true},
    {.name = "lowQualityAuditTrailImage", .isRequired = true},
    {.name = "externalDatabaseRefID", .isRequired = true, .isBase64 = false},
};

constexpr std::initializer_list<Member> idScanMembers{
    {.name = "idScan", .isRequired = false},
    {.name = "idScanFrontImage", .isRequired = false},
    {.name = "idScanBackImage", .isRequired = false},
};

std::string inQuotes(std::string_view text) {
    return std::string{"\""}.append(text).append("\"");
}

/// Checks without decoding: a scan may have ten megabytes. The search is compiled into the standard library, so it is
/// fast in a build without optimisation, too.
bool isBase64(const std::string& text) {
    constexpr auto digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
    const auto end = std::min(text.find_first_not_of(digits), text.size());
    return !text.empty() && text.size() % 4 == 0 && end + padding == text.size();
}

void requireHeader(std::string_view header, std::string_view found, std::string_view expected) {
    if (found != expected) {
        throw Violation{"the " + std::string{header} + " is " + inQuotes(found) + ", not " + inQuotes(expected)};
    }
}

void requireMember(const Json& scan, const Member& member) {
    const auto found = scan.find(member.name);
    if (found == scan.end()) {
        if (member.isRequired) {
            throw Violation{"the scan lacks " + inQuotes(member.name)};
        }
        return;
    }
    const auto* const text = found->get_ptr<const std::string*>();
    if (text == nullptr || (member.isBase64 && !isBase64(*text))) {
        throw Violation{"the scan has a " + inQuotes(member.name) + " that is not " +
                        (member.isBase64 ? "Base64" : "text")};
    }
}

void requireMembers(const Json& scan, std::initializer_list<Member> members) {
    if (!scan.is_object()) {
        throw Violation{"the scan is not an object"};
    }
    for (const auto& member : members) {
        requireMember(scan, member);
    }
    for (const auto& [key, value] : scan.items()) {
        if (std::ranges::none_of(members, [&](const Member& member) { return key == member.name; })) {
            throw Violation{"the scan has an unknown member " + inQuotes(key)};
        }
    }
}

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

void requireScan(const Address& address, const ServiceRequest& request) {
    const bool isFace = address.endpoint == Endpoint::facemap;
    requireHeader("method", request.method, "POST");
    requireHeader("path behind the endpoint", address.operation, isFace ? "/enrollment-3d" : "/idscan-only");
    requireHeader("Content-Type", request.contentType, "application/json");
    requireHeader("X-Device-Key", request.deviceKey, sessionDeviceKey);
    if (request.userAgent.empty()) {
        throw Violation{"there is no User-Agent"};
    }
    if (!isFace) {
        requireHeader("X-User-Agent", request.vendorUserAgent, request.userAgent);
    }
    requireMembers(parsed(request.body), isFace ? faceMembers : idScanMembers);
}

std::string DocumentProxy::receive(const std::string& session, const ServiceRequest& request) {
    if (request.accessKey != sessionAccessKey) {
        throw Violation{.text = "the access key is not the session's", .httpStatus = 401};
    }
    const auto json = parsed(request.body);
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

void DocumentProxy::requireNotice(const std::string& session, const std::string& tid, const Json& notice) const {
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
