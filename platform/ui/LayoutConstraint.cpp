#include <kivo/platform/ui/LayoutConstraint.hpp>

namespace kivo::platform {

double LayoutConstraint::constant() const {
    const auto view = view_.lock();
    if (!view) {
        return 0;
    }
    const auto& placement = view->placement();
    return (attribute_ == Attribute::width ? placement.width : placement.height).value_or(0);
}

void LayoutConstraint::setConstant(double constant) {
    if (const auto view = view_.lock()) {
        auto placement = view->placement();
        (attribute_ == Attribute::width ? placement.width : placement.height) = constant;
        view->setPlacement(placement);
    }
}

} // namespace kivo::platform
