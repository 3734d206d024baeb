#include "Models/ServerReportModel.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace kivo {
namespace {

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
