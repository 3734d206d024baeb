#pragma once

#include <kivo/ResponseCode.hpp>

#include <string>
#include <string_view>

namespace kivo {

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
