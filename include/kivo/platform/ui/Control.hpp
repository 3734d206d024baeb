#pragma once

#include <kivo/platform/ui/TextStyled.hpp>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace kivo::platform {

/// What a person does with a control.
enum class ControlEvent { touchUpInside, editingDidBegin, editingChanged, editingDidEnd };

/// A view that a person operates, and that has a text, such as a button or a field.
class KIVO_EXPORT Control : public TextStyled {
public:
    /// Called with the control that a person has used.
    using Action = std::function<void(const std::shared_ptr<View>& sender)>;

    /// Whether a person can use the control; true at first.
    bool isEnabled() const { return isEnabled_; }

    void setEnabled(bool enabled);

    /// Calls `action` at every such event, after the actions added before.
    void addAction(ControlEvent event, Action action);

    /// Calls the actions of an event, as if a person had caused it.
    void sendActions(ControlEvent event);

private:
    bool isOperable() const override { return isEnabled_ && isUserInteractionEnabled(); }

    bool isEnabled_ = true;
    std::vector<std::pair<ControlEvent, Action>> actions_;
};

} // namespace kivo::platform
