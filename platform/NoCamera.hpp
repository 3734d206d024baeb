#pragma once

#include <kivo/platform/Camera.hpp>

#include <memory>

namespace kivo::platform {

/// A machine without a camera: its sessions run without pictures.
std::shared_ptr<Camera> makeNoCamera();

} // namespace kivo::platform
