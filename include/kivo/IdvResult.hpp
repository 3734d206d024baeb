#pragma once

#include <kivo/IdvEvents.hpp>
#include <kivo/ResponseCode.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kivo {

/// A successful outcome: which step of the session succeeded, and what it yielded.
///
/// The SDK keeps no reference once it has handed a result over; the host may change and share it as it likes.
class IdvResult {
public:
    IdvResult(std::string data, IdvEvents responseType)
        : data_{std::move(data)}
        , responseType_{responseType} {}

    /// The activation code for `SCAN_QR_CODE` and `UPLOAD_DOCUMENT`, empty for scans, else the session's transaction
    /// identifier.
    const std::string& data() const { return data_; }

    void setData(std::string data) { data_ = std::move(data); }

    IdvEvents responseType() const { return responseType_; }

    void setResponseType(IdvEvents responseType) { responseType_ = responseType; }

private:
    std::string data_;
    IdvEvents responseType_;
};

/// How a call ends: with a result that is never null, or with the code of what went wrong.
using IdvOutcome = std::expected<std::shared_ptr<IdvResult>, ResponseCode>;

/// Receives the outcome of a request, or each outcome of a screen. It must not throw; an empty one is allowed and drops
/// the outcome.
using IdvCompletion = std::function<void(IdvOutcome)>;

} // namespace kivo
