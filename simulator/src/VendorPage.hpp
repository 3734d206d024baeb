#pragma once

#include "VendorText.hpp"

#include <kivo/platform/ui/AttributedText.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The look of a page. Texts in scaled fonts follow the reading size.
struct VendorLook {
    platform::Font titleFont = platform::FontMetrics::scaledFont(platform::Font::system(24));
    platform::Font messageFont = platform::FontMetrics::scaledFont(platform::Font::system(17));
    platform::Font hintFont = platform::FontMetrics::scaledFont(platform::Font::system(15));
    platform::Font buttonFont = platform::Font::system(17);
    /// The first button's; the other buttons are quieter.
    platform::Color buttonTextColor = platform::Color::white();
    platform::Color buttonColor = {.red = 0.04, .green = 0.29, .blue = 0.58};
    double buttonHeight = 48;
    double buttonCornerRadius = 12;
};

/// A button on a page.
struct Choice {
    /// The button's identifier.
    std::string name;
    std::string title;
    std::function<void()> action;
};

/// One page of a simulated vendor's screen, marked as simulated: the frame of a camera's screen with a hint,
/// a title, a message, perhaps a picture and a progress, and a button for each choice.
class VendorPage {
public:
    /// What the camera would be held at.
    enum class Frame { face, card };

    /// The identifiers of the views begin with `name`: "scan" gives "scanTitle", "scanMessage" and "scanPicture".
    VendorPage(const std::string& name, VendorLook look, const std::string& title, const std::string& message,
               Frame frame, std::shared_ptr<const platform::Image> picture = {});

    void offer(std::vector<Choice> choices);

    void setMessage(const platform::AttributedText& message);

    /// Shows a turning wheel, for a page that goes on by itself.
    void showWork();

    /// Shows how much of an upload is done, from 0 to 1.
    void setProgress(double progress);

    /// Replaces the content of `screen`.
    void showIn(platform::View& screen) const;

private:
    void addBadge();
    std::shared_ptr<platform::Label> addLabel(std::string name, const platform::Font& font, const std::string& text);

    VendorLook look_;
    std::shared_ptr<platform::StackView> column_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::Label> message_;
    std::shared_ptr<platform::View> progress_;
};

} // namespace kivo::simulator
