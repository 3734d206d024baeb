#pragma once

#include <kivo/Export.hpp>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// A session as the identity service describes it in its answer to a join. Plain data, for one thread at a time.
///
/// A host needs it only to present the closing screen or to ask whether documents are listed. The settings hold the
/// session's keys: do not log or store them.
class KIVO_EXPORT ActivationResponse {
public:
    /// Text by the service's name for the setting. Numbers and flags are texts, too.
    using Settings = std::map<std::string, std::string, std::less<>>;

    /// "response-type": "data" for an accepted join, "fail" for a refused one.
    std::string responseType;
    /// "response-code": the name of a `ResponseCode`, of a refused join.
    std::string responseCode;
    /// "tid": the transaction identifier.
    std::string tId;
    /// "idp-config": the addresses of the session, and its number of attempts.
    Settings idpConfig;
    /// "app-config": settings of the application.
    Settings appConfig;
    /// "idp-biodata": where documents are sent, and the keys for it.
    Settings idpBiodata;
    /// "idp-facemap": where face and ID scans are sent, and the keys for it.
    Settings idpFaceMap;

    /// Reads a join answer, UTF-8 JSON. A member of the wrong type keeps its default and costs a debug line of the log;
    /// the rest is read. Absent when the text is no JSON object, or has more than 1 MiB, 32 levels of nesting or 4096
    /// members of objects and elements of arrays altogether.
    static std::optional<ActivationResponse> decode(std::string_view text);

    /// The session as JSON text under the service's names. U+FFFD replaces bytes that are not UTF-8.
    std::string encode() const;

    /// Whether the session lists documents to choose from: its "app-doclist" is exactly "true". False for null.
    static bool isDocumentListAvailable(const ActivationResponse* sessionObj);
};

} // namespace kivo
