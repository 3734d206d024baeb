#pragma once

#include <kivo/ResponseCode.hpp>

#include <optional>

/// What the numbers mean with which the vendor's library ends a scan.
namespace kivo {

/// Absent for a face scan that the library completed: what the server made of it has been dealt with already.
std::optional<ResponseCode> faceScanFailure(int status);

/// For an ID scan that did not succeed; one that the library completed was refused by the server.
ResponseCode idScanFailure(int status);

} // namespace kivo
