#include "DocumentUpload.hpp"

#include "Cryptography.hpp"
#include "SpecimenDocument.hpp"

#include <kivo/platform/Services.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using platform::UrlErrorKind;
using platform::readid::FailureReason;
using platform::readid::NFCWithAccessControlFlow;
using Json = nlohmann::ordered_json;

/// Lets the pinned servers through and nobody else.
class PinnedServers final : public platform::UrlSessionDelegate {
public:
    explicit PinnedServers(platform::PropertyValue list)
        : list_{std::move(list)} {}

    bool judgesServerTrust() const override { return true; }

    void didReceiveChallenge(const platform::ServerTrust* serverTrust,
                             std::function<void(platform::AuthChallengeDisposition)> completionHandler) override {
        using enum platform::AuthChallengeDisposition;
        const bool isPinned = serverTrust != nullptr &&
                              std::ranges::any_of(serverTrust->chain, [this](const platform::Data& certificate) {
                                  return lists(publicKeyPin(certificate));
                              });
        completionHandler(isPinned ? useCredential : cancelAuthenticationChallenge);
    }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>&, std::uint64_t, std::uint64_t) override {}

private:
    bool lists(const std::string& pin) const {
        const auto* const entries = list_.list();
        return entries != nullptr && std::ranges::any_of(*entries, [&](const platform::PropertyValue& entry) {
                   return entry.text() != nullptr && *entry.text() == pin;
               });
    }

    const platform::PropertyValue list_;
};

/// Null where nothing is pinned.
std::shared_ptr<PinnedServers> pinnedServers(const NFCWithAccessControlFlow& flow) {
    constexpr auto resource = "readid_certificates";
    const auto bundle = platform::services().bundles->main();
    if (!flow.shouldUsePinning || !bundle->pathForResource(resource, "plist")) {
        return nullptr;
    }
    return std::make_shared<PinnedServers>(bundle->propertyList(resource).value_or(platform::PropertyValue{}));
}

std::string documentData(const SpecimenDocument& document, ReadParts parts) {
    Json data{{"document-type", document.kind}};
    if (parts != ReadParts::chip) {
        data["page"] = {{"mrz", document.mrz}};
    }
    if (parts != ReadParts::page) {
        data["chip"] = {{"DG1", base64(document.dg1())},
                        {"DG2", base64(SpecimenDocument::dg2())},
                        {"SOD", base64(SpecimenDocument::sod())}};
    }
    return data.dump();
}

std::string requestBody(const NFCWithAccessControlFlow& flow, ReadParts parts) {
    const auto type = flow.allowedDocumentTypes.empty() ? platform::readid::DocumentType::passport
                                                        : flow.allowedDocumentTypes.front();
    const auto data = documentData(specimenDocument(type), parts);
    if (flow.applicationLevelEncryptionPins.empty()) {
        return Json{{"plain", data}}.dump();
    }
    return Json{{"sealed", seal(flow.applicationLevelEncryptionPins.front(), data)}}.dump();
}

FailureReason reasonOf(UrlErrorKind kind) {
    switch (kind) {
    case UrlErrorKind::secureConnectionFailed:
    case UrlErrorKind::serverCertificateUntrusted:
    case UrlErrorKind::pinMismatch:
        return FailureReason::sslError;
    default:
        return FailureReason::connectionError;
    }
}

FailureReason reasonOf(int httpStatus) {
    switch (httpStatus) {
    case 401:
    case 403:
        return FailureReason::authorisationError;
    case 410:
        return FailureReason::sessionExpired;
    case 429:
        return FailureReason::tooManyRequestsError;
    default:
        return FailureReason::serverSessionError;
    }
}

UploadOutcome outcomeOf(const platform::UrlOutcome& answer) {
    if (!answer) {
        return std::unexpected{reasonOf(answer.error().kind)};
    }
    if (answer->status != 200) {
        return std::unexpected{reasonOf(answer->status)};
    }
    const auto json = Json::parse(answer->body.value_or(""), nullptr, /*allow_exceptions=*/false);
    const auto session = json.is_object() ? json.find("sessionId") : json.end();
    if (session == json.end() || !session->is_string()) {
        return std::unexpected{FailureReason::serverSessionError};
    }
    return session->get<std::string>();
}

} // namespace

void uploadDocument(const NFCWithAccessControlFlow& flow, ReadParts parts,
                    std::function<void(UploadOutcome)> completion) {
    platform::UrlSessionConfiguration configuration;
    configuration.headers = {{"Content-Type", "application/json; charset=UTF-8"}, {"X-Access-Key", flow.accessKey}};
    configuration.requestTimeout = 30s;
    configuration.resourceTimeout = 30s;
    const auto& services = platform::services();
    const auto session = services.urlSessions->make(configuration, pinnedServers(flow), services.mainQueue);
    platform::UrlRequest request;
    request.url = flow.baseUrl.value_or("") + "/readings";
    request.method = "POST";
    request.timeout = 30s;
    request.body = requestBody(flow, parts);
    // The session lives until its one answer has come.
    const auto held = std::make_shared<std::shared_ptr<platform::UrlSession>>(session);
    session->dataTask(std::move(request),
                      [held, completion = std::move(completion)](const platform::UrlOutcome& answer) {
                          held->reset();
                          completion(outcomeOf(answer));
                      });
}

} // namespace kivo::simulator
