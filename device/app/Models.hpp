#pragma once

#include <kivo/platform/ui/Geometry.hpp>

#include <vector>

namespace kivo::device::app {

/// A phone or a tablet that a person might hold. Lengths are in points.
struct Model {
    const char* name = "";
    /// The display, held upright.
    platform::Size size{};
    /// The parts of the display below the status bar, the camera and the bar at the lower edge.
    platform::EdgeInsets safeArea{};
    platform::EdgeInsets safeAreaInLandscape{};
    /// The radius of the display's corners.
    double cornerRadius = 0;
    /// The width of the body around the display; wide enough for the display's corners to lie inside the body's round
    /// ones.
    double bezel = 12;
    /// Whether the camera looks through the display.
    bool hasCameraInDisplay = false;

    platform::Size sizeWhen(bool isLandscape) const {
        return isLandscape ? platform::Size{.width = size.height, .height = size.width} : size;
    }

    const platform::EdgeInsets& safeAreaWhen(bool isLandscape) const {
        return isLandscape ? safeAreaInLandscape : safeArea;
    }
};

/// The choice of devices, the smallest first.
const std::vector<Model>& models();

/// The device that a person finds at the start.
const Model& usualModel();

} // namespace kivo::device::app
