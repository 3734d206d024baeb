#include "Models/ErrorManager.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "platform/json/Json.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace kivo {
namespace {

/// Copies the member's text, if the member exists. False when the member is not a text.
bool takeText(const json::Value& object, std::string_view key, std::optional<std::string>& text) {
    const auto* const member = object.find(key);
    if (member == nullptr || member->kind() == json::Kind::null) {
        return true;
    }
    if (const auto* const written = member->text()) {
        text = *written;
        return true;
    }
    return false;
}

std::string described(const ServerErrorModel& document) {
    return "responseType: " + document.responseType.value_or("none") +
           ", responseCode: " + document.responseCode.value_or("none") +
           ", responseMessage: " + document.responseMessage.value_or("none");
}

bool isLeaving(ResponseCode responseCode) {
    static constexpr std::array leaving{
        ResponseCode::CANCELLED_BY_USER,
        ResponseCode::USER_CANCELLED,
        ResponseCode::BACK_NAVIGATION,
        ResponseCode::CANCELLED,
        ResponseCode::USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT,
    };
    return std::ranges::find(leaving, responseCode) != leaving.end();
}

} // namespace

std::optional<ServerErrorModel> ErrorManager::verifyResponseForServerError(std::string_view data,
                                                                           const json::Limits& limits) {
    const auto answer = json::read(data, limits);
    if (!answer && answer.error().isBeyondLimits()) {
        log::debug("verifyResponseForServerError(data:)",
                   "The answer is too long, too deep or has too many members to be read.");
        return std::nullopt;
    }
    ServerErrorModel document;
    const bool isDocument = answer && answer->kind() == json::Kind::object &&
                            takeText(*answer, KivoResponseKeys::responseType, document.responseType) &&
                            takeText(*answer, KivoResponseKeys::responseCode, document.responseCode) &&
                            takeText(*answer, KivoResponseKeys::responseMessage, document.responseMessage);
    if (!isDocument) {
        return ServerErrorModel{};
    }
    log::debug("verifyResponseForServerError(data:)", [&] { return described(document); });
    return document;
}

std::optional<ResponseCode> ErrorManager::refusalIn(std::string_view data, const json::Limits& limits) {
    const auto document = verifyResponseForServerError(data, limits);
    if (!document) {
        return ResponseCode::UNKNOWN_ERROR;
    }
    if (document->responseType != KivoResponseKeys::fail) {
        return std::nullopt;
    }
    return responseCodeNamed(document->responseCode.value_or("")).value_or(ResponseCode::UNKNOWN_ERROR);
}

ServerReportModel ServerReportModel::of(ResponseCode responseCode, std::string tid, std::string status) {
    const auto reported = isLeaving(responseCode) ? ResponseCode::BACK_NAVIGATION : responseCode;
    return {.action = "inform",
            .tid = std::move(tid),
            .os = "I",
            .status = std::move(status),
            .code = kivo::code(responseCode),
            .message = std::string{name(reported)}};
}

std::string ServerReportModel::description() const {
    return "ServerReportModel(action: " + action + ", tid: " + tid + ", os: " + os + ", status: " + status +
           ", code: " + std::to_string(code) + ", message: " + message + ")";
}

} // namespace kivo
