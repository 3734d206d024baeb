#include "ScanEndpoints.hpp"

#include "ProtocolCheck.hpp"

#include <algorithm>
#include <cctype>
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

/// Looks without decoding: there may be ten megabytes of it.
bool isBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return false;
    }
    text.remove_suffix(text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0);
    return std::ranges::all_of(
        text, [](unsigned char each) { return std::isalnum(each) != 0 || each == '+' || each == '/'; });
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

void requireScan(const Json& scan, std::initializer_list<Member> members) {
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

void requireSound(const ScanRequest& request) {
    const bool isFace = request.endpoint == Endpoint::facemap;
    requireHeader("method", request.method, "POST");
    requireHeader("path behind the endpoint", request.operation, isFace ? "/enrollment-3d" : "/idscan-only");
    requireHeader("Content-Type", request.contentType, "application/json");
    requireHeader("X-Device-Key", request.deviceKey, sessionDeviceKey);
    if (request.userAgent.empty()) {
        throw Violation{"there is no User-Agent"};
    }
    if (!isFace) {
        requireHeader("X-User-Agent", request.vendorUserAgent, request.userAgent);
    }
    requireScan(parsed(request.body), isFace ? faceMembers : idScanMembers);
}

} // namespace

Reply answerScan(const ScanRequest& request, bool isSessionOpen, std::string_view blob) {
    try {
        requireSound(request);
    } catch (const Violation& violation) {
        return {.body = SessionProtocol::refusal("STATUS_BAD_PROTOCOL", violation.text), .violation = violation.text};
    }
    if (!isSessionOpen) {
        return {.body = SessionProtocol::refusal("STATUS_INVALID_SESSION", "There is no such session"),
                .violation = {}};
    }
    return {.body = Json{{"response-type", "pass"}, {"response-data", {{"scanResultBlob", blob}}}}.dump(),
            .violation = {}};
}

} // namespace kivo::simulator
