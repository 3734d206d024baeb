#pragma once

#include <kivo/platform/ui/Fonts.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <expected>
#include <filesystem>
#include <memory>
#include <string>

namespace kivo::device {

/// Takes pictures of what windows show; no display is needed. Main thread.
class KIVO_EXPORT Pictures {
public:
    /// Makes Qt's application object, without a display, unless the process has one already. It lives as long as the
    /// pictures.
    static std::unique_ptr<Pictures> open();

    virtual ~Pictures() = default;

    /// `device::fonts()`.
    virtual std::shared_ptr<platform::Fonts> fonts() = 0;

    /// Lays the window out and writes it as PNG, at `scale` pixels a point. The error is a sentence naming the file.
    virtual std::expected<void, std::string> save(platform::Window& window, const std::filesystem::path& file,
                                                  double scale = 2) = 0;
};

/// `Pictures::open` for programs that load the library only when they need it: the name to look up, and its type. The
/// caller owns what it returns.
inline constexpr auto openPicturesName = "kivoDeviceOpenPictures";
using OpenPictures = Pictures* (*)();

} // namespace kivo::device
