#include "Models/ErrorManager.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace kivo {
namespace {

std::optional<std::string> optionalText(const nlohmann::json& object, std::string_view key) {
    const auto member = object.find(key);
    if (member == object.end() || member->is_null()) {
        return std::nullopt;
    }
    return member->get<std::string>();
}

std::string described(const ServerErrorModel& document) {
    return "responseType: " + document.responseType.value_or("none") +
           ", responseCode: " + document.responseCode.value_or("none") +
           ", responseMessage: " + document.responseMessage.value_or("none");
}

} // namespace

ServerErrorModel ErrorManager::verifyResponseForServerError(std::string_view data) {
    const auto object = nlohmann::json::parse(data, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) {
        return {};
    }
    ServerErrorModel document;
    try {
        document.responseType = optionalText(object, KivoResponseKeys::responseType);
        document.responseCode = optionalText(object, KivoResponseKeys::responseCode);
        document.responseMessage = optionalText(object, KivoResponseKeys::responseMessage);
    } catch (const nlohmann::json::exception&) {
        return {};
    }
    log::debug("verifyResponseForServerError(data:)", [&] { return described(document); });
    return document;
}

std::optional<ResponseCode> ErrorManager::refusalIn(std::string_view data) {
    return refusalIn(verifyResponseForServerError(data));
}

std::optional<ResponseCode> ErrorManager::refusalIn(const ServerErrorModel& document) {
    if (document.responseType != KivoResponseKeys::fail) {
        return std::nullopt;
    }
    return responseCodeNamed(document.responseCode.value_or(""));
}

ResponseCode responseCodeNamed(std::string_view caseName) {
    const auto codes = allResponseCodes();
    const auto found = std::ranges::find(codes, caseName, [](ResponseCode code) { return name(code); });
    return found == codes.end() ? ResponseCode::UNKNOWN_ERROR : *found;
}

} // namespace kivo
