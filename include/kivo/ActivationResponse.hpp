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
/// A host needs the session only for the final status screen, or to ask whether documents are listed. The settings
/// hold the session's keys: do not log or store them.
class KIVO_EXPORT ActivationResponse {
public:
    /// Texts by the service's names for the settings. Numbers and flags are texts, too.
    using Settings = std::map<std::string, std::string, std::less<>>;

    /// "response-type": "data" for an accepted join, "fail" for a refused one.
    std::string responseType;
    /// "response-code": the name of a `ResponseCode`, for a refused join.
    std::string responseCode;
    /// "tid": the transaction identifier.
    std::string tId;
    /// "idp-config": the addresses of the session, and its number of attempts.
    Settings idpConfig;
    /// "app-config": settings of the application.
    Settings appConfig;
    /// "idp-biodata": the addresses and keys for documents.
    Settings idpBiodata;
    /// "idp-facemap": the addresses and keys for face and ID scans.
    Settings idpFaceMap;

    /// Reads a join answer, UTF-8 JSON. A member of the wrong type keeps its default, with a debug line in the log; the
    /// rest is read. Absent when the text is not a JSON object, or has more than 1 MiB, 32 levels of nesting or 4096
    /// members of objects and elements of arrays altogether.
    static std::optional<ActivationResponse> decode(std::string_view text);

    /// The session as JSON text under the service's names. U+FFFD replaces bytes that are not UTF-8.
    std::string encode() const;

    /// Whether the session lists documents to choose from: "app-doclist" is exactly "true". False for null.
    static bool isDocumentListAvailable(const ActivationResponse* sessionObj);
};

} // namespace kivo
