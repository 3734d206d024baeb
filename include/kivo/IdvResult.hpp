#pragma once

#include <kivo/IdvEvents.hpp>
#include <kivo/ResponseCode.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kivo {

/// A successful outcome: the step of the session that succeeded, and its data.
///
/// The SDK keeps no reference to a result that it has delivered; the host may change and share the result.
class IdvResult {
public:
    /// A result with this data for this event.
    IdvResult(std::string data, IdvEvents responseType)
        : data_{std::move(data)}
        , responseType_{responseType} {}

    /// The activation code for `SCAN_QR_CODE` and `UPLOAD_DOCUMENT`, empty for scans, otherwise the session's
    /// transaction identifier.
    const std::string& data() const { return data_; }

    void setData(std::string data) { data_ = std::move(data); }

    /// The step of a session that has succeeded.
    IdvEvents responseType() const { return responseType_; }

    void setResponseType(IdvEvents responseType) { responseType_ = responseType; }

private:
    std::string data_;
    IdvEvents responseType_;
};

/// The outcome of a call: a result that is never null, or the code of the failure.
using IdvOutcome = std::expected<std::shared_ptr<IdvResult>, ResponseCode>;

/// Receives the outcome of a request, or each outcome of a screen. It must not throw. An empty completion is
/// allowed and drops the outcome.
using IdvCompletion = std::function<void(IdvOutcome)>;

} // namespace kivo
