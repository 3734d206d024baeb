#pragma once

#include "platform/json/Json.hpp"

#include <kivo/ResponseCode.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// The identity service's error document.
struct ServerErrorModel {
    std::optional<std::string> responseType;
    std::optional<std::string> responseCode;
    std::optional<std::string> responseMessage;
};

/// Reads refusals out of the identity service's answers.
struct ErrorManager {
    /// The answer read as an error document. All fields are absent if the answer is no such document or a member is not
    /// text. Absent if the answer is beyond the limits.
    static std::optional<ServerErrorModel> verifyResponseForServerError(std::string_view data,
                                                                        const json::Limits& limits = {});

    /// The code with which the service refused; absent when the service accepted. A refusal is "response-type" "fail",
    /// or an answer beyond the limits (`UNKNOWN_ERROR`), because its unread part could refuse.
    static std::optional<ResponseCode> refusalIn(std::string_view data, const json::Limits& limits = {});
};

/// The report of a failure to the identity service.
struct ServerReportModel {
    std::string action;
    /// The reporter's transaction identifier, for log lines; a report is sent with the identifier of the stored
    /// session.
    std::string tid;
    std::string os;
    std::string status;
    int code = 0;
    std::string message;

    /// The report of a response code. Every way in which a person leaves is reported as "BACK_NAVIGATION".
    static ServerReportModel of(ResponseCode responseCode, std::string tid, std::string status);

    /// The report as one line of text, for debug lines.
    std::string description() const;
};

} // namespace kivo
