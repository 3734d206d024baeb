#include "DocumentUpload.hpp"

#include "Cryptography.hpp"

#include <kivo/platform/Services.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <memory>
#include <numeric>
#include <utility>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using platform::UrlErrorKind;
using platform::readid::FailureReason;
using platform::readid::NFCWithAccessControlFlow;
using Json = nlohmann::ordered_json;

/// Trusts the pinned servers only.
class PinnedServers final : public platform::UrlSessionDelegate {
public:
    explicit PinnedServers(platform::PropertyValue list)
        : list_{std::move(list)} {}

    bool judgesServerTrust() const override { return true; }

    bool followsUploads() const override { return false; }

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

/// Null where the host lists no pins.
std::shared_ptr<PinnedServers> pinnedServers(const NFCWithAccessControlFlow& flow) {
    constexpr auto resource = "readid_certificates";
    const auto bundle = platform::services().bundles->main();
    if (!flow.shouldUsePinning || !bundle->pathForResource(resource, "plist")) {
        return nullptr;
    }
    return std::make_shared<PinnedServers>(bundle->propertyList(resource).value_or(platform::PropertyValue{}));
}

/// A document of Utopia, the state of all specimens.
struct SpecimenDocument {
    /// The document's kind, in the words of the simulated document proxy.
    std::string kind;
    /// The lines of the machine readable zone (ICAO 9303).
    std::vector<std::string> mrz;
};

/// A specimen of the first kind that the flow allows.
SpecimenDocument specimenFor(const NFCWithAccessControlFlow& flow) {
    using enum platform::readid::DocumentType;
    switch (flow.allowedDocumentTypes.empty() ? passport : flow.allowedDocumentTypes.front()) {
    case identityCardTD1:
        return {.kind = "identityCardTD1",
                .mrz = {"I<UTOD231458907<<<<<<<<<<<<<<<", "7408122F1204159UTO<<<<<<<<<<<6",
                        "ERIKSSON<<ANNA<MARIA<<<<<<<<<<"}};
    case identityCardTD2:
        return {.kind = "identityCardTD2",
                .mrz = {"I<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<", "D231458907UTO7408122F1204159<<<<<<<6"}};
    case passport:
        break;
    }
    return {.kind = "passport",
            .mrz = {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<", "L898902C36UTO7408122F1204159ZE184226B<<<<<10"}};
}

constexpr std::size_t portraitSize = std::size_t{15} * 1024;
constexpr std::size_t signatureSize = 1900;

/// Bytes without meaning, the same every time.
std::string filler(std::size_t size, unsigned seed) {
    std::string bytes(size, '\0');
    for (auto& byte : bytes) {
        seed = seed * 1103515245U + 12345U;
        byte = static_cast<char>(seed >> 16U);
    }
    return bytes;
}

/// The chip's first data group, which holds the machine readable zone.
std::string dg1(const SpecimenDocument& document) {
    const auto zone = std::accumulate(document.mrz.begin(), document.mrz.end(), std::string{});
    // Tag and length of the data group, then of the zone. One byte holds the length of every zone.
    const auto length = static_cast<char>(zone.size());
    return std::string{'\x61', static_cast<char>(zone.size() + 3), '\x5f', '\x1f', length} + zone;
}

std::string documentData(const SpecimenDocument& document, ReadParts parts) {
    Json data{{"document-type", document.kind}};
    if (parts != ReadParts::chip) {
        data["page"] = {{"mrz", document.mrz}};
    }
    if (parts != ReadParts::page) {
        // The second data group holds the portrait, the last one the signature over the others.
        data["chip"] = {{"DG1", base64(dg1(document))},
                        {"DG2", base64(filler(portraitSize, 2))},
                        {"SOD", base64(filler(signatureSize, 3))}};
    }
    return data.dump();
}

std::string requestBody(const NFCWithAccessControlFlow& flow, ReadParts parts) {
    const auto data = documentData(specimenFor(flow), parts);
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

std::vector<std::string> specimenZone(const NFCWithAccessControlFlow& flow) {
    return specimenFor(flow).mrz;
}

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
    // The session lives until the answer has come.
    const auto held = std::make_shared<std::shared_ptr<platform::UrlSession>>(session);
    session->dataTask(std::move(request),
                      [held, completion = std::move(completion)](const platform::UrlOutcome& answer) {
                          held->reset();
                          completion(outcomeOf(answer));
                      });
}

} // namespace kivo::simulator
