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
    /// The answer read as an error document. All fields are absent when it is none, or a member is not text. No
    /// document at all where the answer is beyond the limits.
    static std::optional<ServerErrorModel> verifyResponseForServerError(std::string_view data,
                                                                        const json::Limits& limits = {});

    /// The code with which the service refused; absent when it accepted. Only "response-type" "fail" refuses, and
    /// an answer beyond the limits (`UNKNOWN_ERROR`), which could say so where the reader does not look.
    static std::optional<ResponseCode> refusalIn(std::string_view data, const json::Limits& limits = {});
};

/// The case of that name, else `UNKNOWN_ERROR`.
ResponseCode responseCodeNamed(std::string_view caseName);

/// A failure as it is reported to the identity service.
struct ServerReportModel {
    std::string action;
    /// The reporter's transaction identifier; the stored session's is the one that is sent.
    std::string tid;
    std::string os;
    std::string status;
    int code = 0;
    std::string message;

    /// The report of a response code. Everything by which a person leaves is reported as "BACK_NAVIGATION".
    static ServerReportModel of(ResponseCode responseCode, std::string tid, std::string status);

    /// The report as one line of text, for debug lines.
    std::string description() const;
};

} // namespace kivo
