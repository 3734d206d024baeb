#pragma once

#include "Models/SessionKeys.hpp"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

/// The joined session as the secure store keeps it: the raw text of the join answer.
namespace kivo {

/// The stored join answer, decoded; null also when the answer is not a session. The same answer is decoded once.
std::shared_ptr<const ActivationResponse> storedSession();

/// Puts empty text in place of the stored join answer, without waiting for the disk. False, with an error line, on
/// failure.
bool emptyStoredJoinAnswer();

/// Waits until an emptied join answer is on the disk.
void settleStoredJoinAnswer();

/// The place of a join in the order in which the joins of all interface versions began; the first is 1.
using JoinNumber = std::uint64_t;

/// The number of a join that begins. Any thread.
JoinNumber nextJoinNumber();

/// While the lock is held, no answer to another join is stored: an answer is compared with the stored one, and stored,
/// in one step. Any thread.
std::unique_lock<std::mutex> lockJoinAnswers();

/// Whether the answer to a later join is stored already: the answer to this join would put an older session in place of
/// the newer one. Any thread.
bool isOvertaken(JoinNumber join);

/// Replaces the stored join answer and, if given, the stored activation code. False, with an error line, if the answer
/// could not be stored or is beyond the limits of the reader, because every later operation reads the stored answer
/// again.
bool storeJoinAnswer(std::string_view answer, std::optional<std::string_view> activationCode = {}, JoinNumber join = 0);

/// Deletes the stored join answer. False when there was no answer, and, with an error line, on failure.
bool removeStoredJoinAnswer();

/// Settings of the joined session, read afresh from the secure store at every access.
struct Config {
    /// The address for face scans; empty when missing.
    static std::string facemapBaseURL();

    /// The address for ID scans; empty when missing.
    static std::string ocrIDScanBaseURL();

    /// The face scan library's device key; absent without a stored session, empty when the session has no key.
    static std::optional<std::string> DeviceKeyIdentifier();
};

} // namespace kivo
