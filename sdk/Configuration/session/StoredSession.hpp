#pragma once

#include "Models/SessionKeys.hpp"

#include <optional>
#include <string>
#include <string_view>

/// The joined session as the secure store keeps it: the raw text of the join answer.
namespace kivo {

/// The stored join answer; absent when there is none or it is no UTF-8 text.
std::optional<std::string> storedJoinAnswer();

/// The stored join answer, decoded; absent also when it is no session.
std::optional<ActivationResponse> storedSession();

/// Replaces the stored join answer. False, with an error line, when it could not be stored or is beyond the limits of
/// the reader: every later operation reads the stored answer again.
bool storeJoinAnswer(std::string_view answer);

/// Keeps the activation code of the session just joined; same result.
bool storeActivationCode(std::string_view activationCode);

/// Deletes the stored join answer. False when there was none, and with an error line when it could not be deleted.
bool removeStoredJoinAnswer();

/// Settings of the joined session, read afresh from the secure store at every access.
struct Config {
    /// Where face scans are posted; empty when missing.
    static std::string facemapBaseURL();

    /// Where ID scans are posted; empty when missing.
    static std::string ocrIDScanBaseURL();

    /// The face scan library's device key: absent without a stored session, empty when that has none.
    static std::optional<std::string> DeviceKeyIdentifier();
};

} // namespace kivo
