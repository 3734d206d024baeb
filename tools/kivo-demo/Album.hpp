#pragma once

#include "contrast/ContrastReport.hpp"

#include <kivo/device/Pictures.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace demo {

/// Takes a picture of every screen when it appears, and after every step that has changed it. A line of the file
/// "contrast.txt" tells how well the texts of each picture stand out.
class Album final : public kivo::platform::WindowObserver, public std::enable_shared_from_this<Album> {
public:
    /// Loads the device's library, which draws the pictures. Makes `folder` for the pictures if need be. Throws
    /// `std::runtime_error` with a sentence.
    static std::shared_ptr<Album> open(const std::filesystem::path& folder);

    Album(std::unique_ptr<kivo::device::Pictures> pictures, std::filesystem::path folder);

    /// The fonts service that measures texts as the album draws them.
    std::shared_ptr<kivo::platform::Fonts> fonts() { return pictures_->fonts(); }

    void follow(const std::shared_ptr<kivo::platform::Window>& window);

    /// Takes a picture unless nothing has changed since the last one.
    void take(std::string_view occasion);

    /// The pictures that were written.
    int count() const { return saved_; }

    /// The reason why a picture is missing, or the first text that hardly stands out; empty when all is well.
    const std::string& problem() const { return problem_; }

    void viewDidChange(kivo::platform::View& view) override;
    void screenDidChange() override;

private:
    std::unique_ptr<kivo::device::Pictures> pictures_;
    std::filesystem::path folder_;
    contrast::Report contrasts_;
    std::weak_ptr<kivo::platform::Window> window_;
    bool isChanged_ = true;
    int number_ = 0;
    int saved_ = 0;
    std::string problem_;
};

} // namespace demo
