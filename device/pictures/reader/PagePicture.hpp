#pragma once

#include <kivo/platform/VideoFrame.hpp>

#include <string>
#include <vector>

namespace kivo::device::pictures {

/// A camera's picture of an invented passport's page with these two lines at its foot, in the letters of the standard
/// (OCR-B) where the machine has them. Needs Qt's application object.
platform::VideoFrame pagePicture(const std::vector<std::string>& lines);

} // namespace kivo::device::pictures
