#pragma once

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
    /// The answer read as an error document. All fields are absent when it is none, or a member is not text.
    static ServerErrorModel verifyResponseForServerError(std::string_view data);

    /// The code with which the service refused; absent when it accepted. Only "response-type" "fail" refuses.
    static std::optional<ResponseCode> refusalIn(std::string_view data);

    /// The same judgement on a document that has been read already.
    static std::optional<ResponseCode> refusalIn(const ServerErrorModel& document);
};

/// The case of that name, else `UNKNOWN_ERROR`.
ResponseCode responseCodeNamed(std::string_view caseName);

} // namespace kivo
