#pragma once

#include <string>

namespace simulation {

/// The QR picture of an activation code, as the library scans it: an SVG image, black on white.
std::string qrPicture(const std::string& activationCode);

} // namespace simulation
