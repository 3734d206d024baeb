#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kivo {

/// Starts the vendor's library with the stored session's keys, in the mode that the deployment names. Without a session
/// the keys are empty.
///
/// `completion` is called once, on any thread; without a library at once, with false.
void startFaceTec(std::function<void(bool isReady)> completion);

/// Has the library take its texts from the host's table.
void chooseFaceTecLanguage();

/// What lets the library begin a scan; absent where the stored session allows none.
std::optional<std::string> storedScanToken();

} // namespace kivo
