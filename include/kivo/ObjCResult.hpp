#pragma once

#include <kivo/IdvResult.hpp>
#include <kivo/RawValue.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace kivo {

/// Whether an `ObjCResult` holds a success or an error.
enum class ObjCResultStatus { success = 0, failure = 1 };

template <>
struct RawValues<ObjCResultStatus> {
    static constexpr int first = 0;
    static constexpr int last = 1;
};

/// A failure as plain values.
class ObjCError {
public:
    /// An error with these values. `code` is a number of `ResponseCode`, or another of the host's.
    ObjCError(std::string errorName, std::string message, std::int64_t code, std::string genericMessage)
        : errorName_{std::move(errorName)}
        , message_{std::move(message)}
        , code_{code}
        , genericMessage_{std::move(genericMessage)} {}

    /// The response code's name, such as "STATUS_INVALID_SESSION".
    const std::string& errorName() const { return errorName_; }

    void setErrorName(std::string errorName) { errorName_ = std::move(errorName); }

    /// The sentence for the code, in English.
    const std::string& message() const { return message_; }

    void setMessage(std::string message) { message_ = std::move(message); }

    /// The response code's number, 1001 to 3020 in failures that the SDK reports.
    std::int64_t code() const { return code_; }

    void setCode(std::int64_t code) { code_ = code; }

    /// The sentence for the group of codes to which the code belongs, in English.
    const std::string& genericMessage() const { return genericMessage_; }

    void setGenericMessage(std::string genericMessage) { genericMessage_ = std::move(genericMessage); }

private:
    std::string errorName_;
    std::string message_;
    std::int64_t code_;
    std::string genericMessage_;
};

/// An outcome as an object, for hosts that cannot use `IdvOutcome`. Exactly one of success and error is set.
class ObjCResult {
public:
    /// A success.
    explicit ObjCResult(std::shared_ptr<IdvResult> success)
        : success_{std::move(success)} {}

    /// A failure.
    explicit ObjCResult(std::shared_ptr<ObjCError> error)
        : error_{std::move(error)} {}

    /// Whether the result is a success.
    ObjCResultStatus status() const { return success_ ? ObjCResultStatus::success : ObjCResultStatus::failure; }

    /// The result object that the session API delivered; null on failure.
    const std::shared_ptr<IdvResult>& success() const { return success_; }

    /// Null on success.
    const std::shared_ptr<ObjCError>& error() const { return error_; }

private:
    std::shared_ptr<IdvResult> success_;
    std::shared_ptr<ObjCError> error_;
};

} // namespace kivo
