#include "SessionProtocol.hpp"

#include <kivo/SdkVersions.hpp>

#include <algorithm>
#include <charconv>
#include <ranges>
#include <utility>

namespace kivo::simulator {
namespace {

using Json = nlohmann::ordered_json;

void requireUpdate(const Json& body) {
    if (body.is_object() && body.contains("code")) {
        requireTexts(body, "the report", {"kivo-action", "tid", "os", "status", "code", "message"});
    } else {
        requireTexts(body, "the update", {"kivo-action", "message", "tid"});
    }
}

void requireUpload(Json body) {
    const auto object = body.is_object() ? body.find("acquisition-object") : body.end();
    if (object == body.end()) {
        throw Violation{"the upload lacks \"acquisition-object\""};
    }
    if (!object->is_number_integer() || *object < 0 || *object > 7) {
        throw Violation{"the upload has an \"acquisition-object\" that is no integer from 0 to 7"};
    }
    body.erase("acquisition-object");
    requireTexts(body, "the upload", {"source", "data"});
}

void requireJoin(const Json& body) {
    if (!body.is_object()) {
        throw Violation{"the join is not an object"};
    }
    auto texts = body;
    texts.erase("app-info");
    texts.erase("app-config");
    requireTexts(texts, "the join", {"kivo-action", "kivo-init-code", "kivo-device-code"});
    if (body.at("kivo-action") != "init") {
        throw Violation{R"(the join has a "kivo-action" that is not "init")"};
    }
    requireTexts(body.value("app-info", Json{}), "\"app-info\"",
                 {"appVersion", "os", "networkType", "NetworkIpAddress", "networkMacAddress", "deviceModel",
                  "deviceSerialNo", "expiryDateLeafCert", "expiryDateIntermediateCert", "sdkVersion", "deviceId",
                  "apiLevel"});
    requireTexts(body.value("app-config", Json{}), "\"app-config\"",
                 {"target-env", "kivo-app-doclist", "kivo-expiry-grace", "kivo-facematch-min", "kivo-doc-issuers",
                  "kivo-images"});
}

void requireForm(const Address& address, const ServiceRequest& request) {
    constexpr std::string_view contentType = "application/json; charset=UTF-8";
    if (request.method != "POST") {
        throw Violation{"the method is " + std::string{request.method} + ", not POST"};
    }
    if (request.contentType != contentType) {
        throw Violation{"the Content-Type is \"" + std::string{request.contentType} + "\", not \"" +
                        std::string{contentType} + "\""};
    }
    const std::string_view operation = address.endpoint == Endpoint::biodata ? "/readings" : "";
    if (address.operation != operation) {
        throw Violation{"the path behind the endpoint " + std::string{name(address.endpoint)} + " is \"" +
                        address.operation + "\", not \"" + std::string{operation} + "\""};
    }
}

/// A device code is an interface version, "01", and the host's key.
constexpr std::size_t versionPrefix = 4;

bool hasVersionPrefix(std::string_view deviceCode) {
    const auto versions = SdkVersions::all();
    return deviceCode.size() >= versionPrefix && deviceCode.substr(2).starts_with("01") &&
           std::ranges::find(versions, deviceCode.substr(0, 2)) != versions.end();
}

constexpr std::size_t mostSessions = 100'000;

/// The number in a session's name; 0, which no session has, for other texts.
std::uint64_t sessionNumber(std::string_view session) {
    std::uint64_t number = 0;
    if (session.starts_with('s')) {
        std::from_chars(session.data() + 1, session.data() + session.size(), number);
    }
    return number;
}

Reply noSuchSession() {
    return {.body = SessionProtocol::refusal("STATUS_INVALID_SESSION", "There is no such session"), .violation = {}};
}

Reply scanTaken(std::string_view blob) {
    return {.body = Json{{"response-type", "pass"}, {"response-data", {{"scanResultBlob", blob}}}}.dump(),
            .violation = {}};
}

} // namespace

SessionProtocol::SessionProtocol(IdentityServiceConfiguration configuration, std::function<std::string(Endpoint)> base)
    : configuration_{std::move(configuration)}
    , base_{std::move(base)}
    , documentProxy_{configuration_}
    , activationCodes_{configuration_.activationCodes} {}

std::vector<std::string> SessionProtocol::activationCodes() const {
    const std::scoped_lock lock{mutex_};
    return activationCodes_;
}

void SessionProtocol::setActivationCodes(std::vector<std::string> codes) {
    const std::scoped_lock lock{mutex_};
    activationCodes_ = std::move(codes);
}

std::vector<JoinedSession> SessionProtocol::sessions() const {
    const std::scoped_lock lock{mutex_};
    const auto all = sessions_ | std::views::values;
    return {all.begin(), all.end()};
}

Reply SessionProtocol::answer(const Address& address, const ServiceRequest& request, std::string_view scanResultBlob) {
    try {
        return judge(address, request, scanResultBlob);
    } catch (const Violation& violation) {
        return {.body = refusal("STATUS_BAD_PROTOCOL", violation.text),
                .violation = violation.text,
                .status = violation.httpStatus};
    }
}

Reply SessionProtocol::judge(const Address& address, const ServiceRequest& request, std::string_view scanResultBlob) {
    if (address.endpoint == Endpoint::facemap || address.endpoint == Endpoint::idScan) {
        requireScan(address, request);
        return tidOf(address.session) ? scanTaken(scanResultBlob) : noSuchSession();
    }
    requireForm(address, request);
    if (address.endpoint == Endpoint::join) {
        return join(request.body);
    }
    const auto tid = tidOf(address.session);
    if (address.endpoint == Endpoint::biodata && tid) {
        return {.body = documentProxy_.receive(address.session, request), .violation = {}};
    }
    const auto json = parsed(request.body);
    require(address, json, tid.value_or(""));
    if (!tid || (address.endpoint == Endpoint::update && json.at("tid") != *tid)) {
        return noSuchSession();
    }
    return {.body = Json{{"response-type", "data"}, {"tid", *tid}}.dump(), .violation = {}};
}

void SessionProtocol::require(const Address& address, const Json& request, const std::string& tid) const {
    switch (address.endpoint) {
    case Endpoint::update:
        requireUpdate(request);
        break;
    case Endpoint::upload:
        // Images and the notice of a document reading share one address.
        if (request.is_object() && request.contains("opaqueId")) {
            documentProxy_.requireNotice(address.session, tid, request);
        } else {
            requireUpload(request);
        }
        break;
    case Endpoint::status:
    case Endpoint::commit:
        requireTexts(request, "the request", {});
        break;
    default:
        if (!request.is_object()) {
            throw Violation{"the request is not an object"};
        }
        break;
    }
}

std::optional<std::string> SessionProtocol::tidOf(const std::string& session) const {
    const auto number = sessionNumber(session);
    const std::scoped_lock lock{mutex_};
    const auto found = sessions_.find(number);
    return found == sessions_.end() || found->second.name != session ? std::nullopt : std::optional{found->second.tid};
}

Reply SessionProtocol::join(std::string_view body) {
    const auto json = parsed(body);
    requireJoin(json);
    const auto deviceCode = json.at("kivo-device-code").get<std::string>();
    if (!hasVersionPrefix(deviceCode) ||
        (configuration_.deviceKey && deviceCode.substr(versionPrefix) != *configuration_.deviceKey)) {
        return {.body = refusal("STATUS_INVALID_DEVICE_CODE", "The device code is unknown"), .violation = {}};
    }
    const auto codes = activationCodes();
    if (std::ranges::find(codes, json.at("kivo-init-code").get<std::string>()) == codes.end()) {
        return {.body = refusal("STATUS_INVALID_ACTIVATION_CODE", "The activation code is unknown"), .violation = {}};
    }
    return openSession(deviceCode.substr(0, 2));
}

Reply SessionProtocol::openSession(std::string interfaceVersion) {
    std::string session;
    std::string tid;
    {
        const std::scoped_lock lock{mutex_};
        const auto number = std::to_string(++lastSession_);
        session = "s" + number;
        tid = "T" + number;
        sessions_.emplace(lastSession_, JoinedSession{.name = session,
                                                      .tid = tid,
                                                      .interfaceVersion = std::move(interfaceVersion),
                                                      .joinedAt = std::chrono::system_clock::now()});
        if (sessions_.size() > mostSessions) {
            sessions_.erase(sessions_.begin());
        }
    }
    const auto addressOf = [&](Endpoint endpoint) {
        return base_(endpoint) + "/session/" + session + "/" + std::string{name(endpoint)};
    };
    Json idpConfig{{"update-endpoint", addressOf(Endpoint::update)},
                   {"status-endpoint", addressOf(Endpoint::status)},
                   {"resume-endpoint", addressOf(Endpoint::commit)}};
    if (configuration_.retryLimit) {
        idpConfig["retry-limit"] = std::to_string(*configuration_.retryLimit);
    }
    Json biodata{{"biodata-endpoint", addressOf(Endpoint::upload)},
                 {"biodata-proxy", addressOf(Endpoint::biodata)},
                 {"biodata-access-key", sessionAccessKey}};
    if (!documentProxy_.encryptKey().empty()) {
        biodata["biodata-encrypt-key"] = documentProxy_.encryptKey();
    }
    const Json answer{{"response-type", "data"},
                      {"tid", tid},
                      {"idp-config", idpConfig},
                      {"app-config", {{"app-doclist", configuration_.documentList ? "true" : "false"}}},
                      {"idp-biodata", biodata},
                      {"idp-facemap",
                       {{"facemap-endpoint", addressOf(Endpoint::facemap)},
                        {"ocridscan-endpoint", addressOf(Endpoint::idScan)},
                        {"facemap-token", "simulated-token"},
                        {"facemap-public-key", "simulated-public-key"},
                        {"facemap-device-key", sessionDeviceKey}}}};
    return {.body = answer.dump(), .violation = {}, .session = session};
}

std::string SessionProtocol::refusal(std::string_view responseCode, std::string_view message) {
    return Json{{"response-type", "fail"}, {"response-code", responseCode}, {"response-message", message}}.dump(
        -1, ' ', false, Json::error_handler_t::replace);
}

} // namespace kivo::simulator
