#pragma once

#include <kivo/device/Pictures.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <expected>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace demo {

/// Takes a picture of every screen as it comes, and of what a step made of it.
class Album final : public kivo::platform::WindowObserver, public std::enable_shared_from_this<Album> {
public:
    /// Loads the device's library, which draws; the pictures go into `folder`, which is made if need be. The error is a
    /// sentence.
    static std::expected<std::shared_ptr<Album>, std::string> open(const std::filesystem::path& folder);

    Album(std::unique_ptr<kivo::device::Pictures> pictures, std::filesystem::path folder);

    /// What texts are measured with, so that they fit as they are drawn.
    std::shared_ptr<kivo::platform::Fonts> fonts() { return pictures_->fonts(); }

    void follow(const std::shared_ptr<kivo::platform::Window>& window);

    /// Takes a picture unless nothing has changed since the last one.
    void take(std::string_view occasion);

    int count() const { return count_; }

    /// Why a picture is missing; empty when none is.
    const std::string& problem() const { return problem_; }

    void viewDidChange(kivo::platform::View& view) override;
    void screenDidChange() override;

private:
    std::unique_ptr<kivo::device::Pictures> pictures_;
    std::filesystem::path folder_;
    std::weak_ptr<kivo::platform::Window> window_;
    bool isChanged_ = true;
    int count_ = 0;
    std::string problem_;
};

} // namespace demo
