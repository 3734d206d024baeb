#pragma once

#include <kivo/platform/ui/Layer.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <optional>
#include <string>

namespace kivo {

/// One field of a `LuOTPView`. It reports the delete key also when it is empty.
class LuOTPTextField final : public platform::TextField {
public:
    platform::Color borderColorOfTextField{.red = 0, .green = 90.0 / 255, .blue = 164.0 / 255};
    /// Becomes the placeholder when the view makes the field.
    std::string placeholderString;
    double borderWidthOfTextField = 2;
    std::optional<platform::Layer> shapeLayer;

    bool deleteBackward() override;
};

} // namespace kivo
