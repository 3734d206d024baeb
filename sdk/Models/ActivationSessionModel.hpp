#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// A session as the identity service describes it in its join answer.
///
/// Decoding is tolerant: a member of the wrong type keeps its default and costs one debug line, the rest is read.
class ActivationResponse {
public:
    using Settings = std::map<std::string, std::string, std::less<>>;

    std::string responseType;
    std::string responseCode;
    std::string tId;
    Settings idpConfig;
    Settings appConfig;
    Settings idpBiodata;
    Settings idpFaceMap;

    /// Reads a join answer; absent only when the text is no JSON object.
    static std::optional<ActivationResponse> decode(std::string_view text);

    /// The session as JSON text under the wire's names.
    std::string encode() const;

    /// Whether the session offers the list of documents: "app-doclist" is exactly "true".
    static bool isDocumentListAvailable(const ActivationResponse* sessionObj);
};

/// A setting's text; empty when it is missing.
const std::string& settingIn(const ActivationResponse::Settings& settings, std::string_view key);

} // namespace kivo
