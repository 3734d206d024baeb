#pragma once

#include <kivo/ResponseCode.hpp>

#include <functional>
#include <optional>
#include <string>

/// The vendor's face scan library: its start, and the codes for its failures.
namespace kivo {

/// Starts the vendor's library with the stored session's keys, in the mode that the deployment names. Without a session
/// the keys are empty.
///
/// `completion` is called once, on any thread; without a library, before the function returns, with false.
void startFaceTec(std::function<void(bool isReady)> completion);

/// Lets the library take its texts from the host's table of texts.
void chooseFaceTecLanguage();

/// The token with which the library begins a scan; absent where the stored session allows no scan.
std::optional<std::string> storedScanToken();

/// The code for the status with which a face scan ended; absent for a completed scan, whose outcome has been reported
/// with the server's answer.
std::optional<ResponseCode> faceScanFailure(int status);

/// The code for the status of an ID scan that did not succeed. A scan that the library completed was refused by the
/// server.
ResponseCode idScanFailure(int status);

} // namespace kivo
