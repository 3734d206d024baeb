#include "VendorEndpoints.hpp"

#include <algorithm>
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

} // namespace

void requireScan(const Address& address, const ServiceRequest& request) {
    const bool isFace = address.endpoint == Endpoint::facemap;
    requireHeader("method", request.method, "POST");
    requireHeader("path behind the endpoint", address.operation, isFace ? "/enrollment-3d" : "/idscan-only");
    requireHeader("Content-Type", request.contentType, "application/json");
    if (request.deviceKey != sessionDeviceKey) {
        throw Violation{"the X-Device-Key is not the session's"};
    }
    if (request.userAgent.empty()) {
        throw Violation{"there is no User-Agent"};
    }
    if (!isFace) {
        requireHeader("X-User-Agent", request.vendorUserAgent, request.userAgent);
    }
    requireMembers(parsed(request.body), isFace ? faceMembers : idScanMembers);
}

} // namespace kivo::simulator
