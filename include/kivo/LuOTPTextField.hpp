#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Layer.hpp>
#include <kivo/platform/ui/LayoutMembers.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <optional>
#include <string>

namespace kivo {

/// One field of a `LuOTPView`. The field reports the delete key to its delegate even when the field is empty.
///
/// In a storyboard, the class name is "LuOTPTextField"; `placeholderString`, `borderColorOfTextField` and
/// `borderWidthOfTextField` are members there. Main thread only.
class KIVO_EXPORT LuOTPTextField final : public platform::TextField, public platform::DescribedInLayouts {
public:
    LuOTPTextField();
    ~LuOTPTextField() override;

    /// The text that the empty field shows; empty at first.
    const std::string& placeholderString() const { return placeholderString_; }

    /// Changes the placeholder immediately.
    void setPlaceholderString(std::string placeholder);

    // Kept for the host: a `LuOTPView` gives its fields the border of its own properties.

    /// The colour of the circle around the character.
    platform::Color borderColorOfTextField{.red = 0, .green = 90.0 / 255, .blue = 164.0 / 255};
    /// In points.
    double borderWidthOfTextField = 2;
    /// Absent at first.
    std::optional<platform::Layer> shapeLayer;

    bool deleteBackward() override;
    void describe(platform::LayoutMembers& members) override;

private:
    std::string placeholderString_;
};

} // namespace kivo
