#pragma once

#include <kivo/device/TextContrast.hpp>
#include <kivo/platform/ui/Fonts.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <expected>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kivo::device {

/// Takes pictures of windows; no display is needed. Main thread.
class KIVO_EXPORT Pictures {
public:
    /// Makes Qt's application object, without a display, unless the process has one already. The application object
    /// lives as long as the returned object.
    static std::unique_ptr<Pictures> open();

    virtual ~Pictures() = default;

    /// `device::fonts()`.
    virtual std::shared_ptr<platform::Fonts> fonts() = 0;

    /// Lays the window out and writes it as PNG, at `scale` pixels a point. The error is a sentence naming the file.
    virtual std::expected<void, std::string> save(platform::Window& window, const std::filesystem::path& file,
                                                  double scale = 2) = 0;

    /// `device::textContrasts(window)`.
    virtual std::vector<TextContrast> contrasts(platform::Window& window) = 0;
};

/// The name and the type of `Pictures::open` for programs that load this library with dlopen. The caller owns the
/// returned object.
inline constexpr auto openPicturesName = "kivoDeviceOpenPictures";
using OpenPictures = Pictures* (*)();

} // namespace kivo::device
