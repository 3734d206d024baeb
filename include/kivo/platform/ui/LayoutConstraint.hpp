#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/View.hpp>

#include <memory>

namespace kivo::platform {

/// A handle on the width or height of a view's placement, which a storyboard gives to a screen.
class KIVO_EXPORT LayoutConstraint {
public:
    /// The side whose length the constraint sets.
    enum class Attribute { width, height };

    /// A constraint of no view.
    LayoutConstraint() = default;

    /// A constraint of that view, which may be gone.
    LayoutConstraint(std::weak_ptr<View> view, Attribute attribute)
        : view_{std::move(view)}
        , attribute_{attribute} {}

    /// In points; 0 when the view no longer exists or its placement lacks the dimension.
    double constant() const;
    void setConstant(double constant);

private:
    std::weak_ptr<View> view_;
    Attribute attribute_ = Attribute::width;
};

} // namespace kivo::platform
