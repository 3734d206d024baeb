#pragma once

#include <kivo/platform/ui/AttributedText.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The look of a page. Texts in scaled fonts follow the reading size.
struct VendorLook {
    platform::Font titleFont = platform::FontMetrics::scaledFont(platform::Font::system(24));
    platform::Font messageFont = platform::FontMetrics::scaledFont(platform::Font::system(17));
    platform::Font buttonFont = platform::Font::system(17);
    platform::Color buttonTextColor = platform::Color::systemBlue();
    std::optional<platform::Color> buttonColor;
    double buttonHeight = 44;
    double buttonCornerRadius = 0;
};

/// A button on a page.
struct Choice {
    /// The button's identifier.
    std::string name;
    std::string title;
    std::function<void()> action;
};

/// One page of a simulated vendor's screen: a title, a message, perhaps a picture, and a button for each choice.
class VendorPage {
public:
    /// The identifiers of the views begin with `name`: "scan" gives "scanTitle", "scanMessage" and "scanPicture".
    VendorPage(const std::string& name, VendorLook look, const std::string& title, const std::string& message,
               std::shared_ptr<const platform::Image> picture = {});

    void offer(std::vector<Choice> choices);

    void setMessage(const platform::AttributedText& message);

    /// Replaces the content of `screen`.
    void showIn(platform::View& screen) const;

private:
    std::shared_ptr<platform::Label> addLabel(std::string name, const platform::Font& font, const std::string& text);

    VendorLook look_;
    std::shared_ptr<platform::StackView> column_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::Label> message_;
};

} // namespace kivo::simulator
