#pragma once

#include <kivo/ActivationResponse.hpp>

#include <string>
#include <string_view>

/// The names of the session's values in requests, in answers and in the secure store.
namespace kivo {

/// Members of the identity service's answers.
struct KivoResponseKeys {
    static constexpr std::string_view responseType = "response-type";
    static constexpr std::string_view responseCode = "response-code";
    static constexpr std::string_view responseMessage = "response-message";
    static constexpr std::string_view tid = "tid";
    static constexpr std::string_view idpConfig = "idp-config";
    static constexpr std::string_view appConfig = "app-config";
    static constexpr std::string_view idpBiodata = "idp-biodata";
    static constexpr std::string_view idpFaceMap = "idp-facemap";

    static constexpr std::string_view updateEndpoint = "update-endpoint";
    static constexpr std::string_view statusEndpoint = "status-endpoint";
    static constexpr std::string_view resumeEndpoint = "resume-endpoint";
    static constexpr std::string_view retryLimit = "retry-limit";
    static constexpr std::string_view documentList = "app-doclist";
    static constexpr std::string_view biodataProxy = "biodata-proxy";
    static constexpr std::string_view biodataAccessKey = "biodata-access-key";
    static constexpr std::string_view biodataEncryptKey = "biodata-encrypt-key";
    static constexpr std::string_view biodataEndpoint = "biodata-endpoint";
    static constexpr std::string_view facemapEndpoint = "facemap-endpoint";
    static constexpr std::string_view idScanEndpoint = "ocridscan-endpoint";
    static constexpr std::string_view faceMapDeviceKey = "facemap-device-key";
    static constexpr std::string_view faceMapPublicKey = "facemap-public-key";
    static constexpr std::string_view faceMapToken = "facemap-token";

    /// Values of "response-type".
    static constexpr std::string_view data = "data";
    static constexpr std::string_view fail = "fail";
    static constexpr std::string_view pass = "pass";

    /// Members of the vendor's answers to a scan.
    static constexpr std::string_view responseData = "response-data";
    static constexpr std::string_view scanResultBlob = "scanResultBlob";
};

/// Members of the requests.
struct KivoRequestKeys {
    static constexpr const char* action = "kivo-action";
    static constexpr const char* activationCode = "kivo-init-code";
    static constexpr const char* deviceCode = "kivo-device-code";
    static constexpr const char* appInfo = "app-info";
    static constexpr const char* appConfig = "app-config";
    static constexpr const char* message = "message";
    static constexpr const char* tid = "tid";
    static constexpr const char* os = "os";
    static constexpr const char* status = "status";
    static constexpr const char* code = "code";
    static constexpr const char* source = "source";
    static constexpr const char* acquisitionObject = "acquisition-object";
    static constexpr const char* data = "data";
};

/// Items in the secure store.
struct StoredItems {
    static constexpr std::string_view joinAnswer = "qr_response";
    static constexpr std::string_view activationCode = "qr_code";
};

/// The text of a setting; empty when missing.
const std::string& settingIn(const ActivationResponse::Settings& settings, std::string_view key);

} // namespace kivo
