#include "platform/ui/FirstResponder.hpp"

#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/View.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <algorithm>
#include <utility>

namespace kivo::platform {
namespace {

constexpr double leastVisibleAlpha = 0.01;

/// The first view that matches, depth first, in the tree below `root`; null without a match.
template <class Predicate>
std::shared_ptr<View> firstIn(const std::shared_ptr<View>& root, const Predicate& matches) {
    if (matches(*root)) {
        return root;
    }
    for (const auto& subview : root->subviews()) {
        if (auto found = firstIn(subview, matches)) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

View::~View() {
    for (const auto& subview : subviews_) {
        subview->superview_ = nullptr;
    }
    if (wasFirstResponder(this)) {
        setFirstResponder(nullptr);
        updateKeyboard();
    }
}

void View::addSubview(const std::shared_ptr<View>& view) {
    insertSubview(view, subviews_.size());
}

void View::insertSubview(const std::shared_ptr<View>& view, std::size_t index) {
    if (!view || isDescendantOf(*view)) {
        return;
    }
    view->removeFromSuperview();
    view->superview_ = this;
    subviews_.insert(subviews_.begin() + static_cast<std::ptrdiff_t>(std::min(index, subviews_.size())), view);
    view->setNeedsLayout();
    if (window()) {
        view->tellContentSizeCategoryChange();
        updateKeyboard();
    }
    noteChange();
    view->tellWindowAboutScreens();
}

void View::removeFromSuperview() {
    const auto self = shared_from_this();
    const auto parent = superview();
    if (!parent) {
        return;
    }
    endEditing();
    std::erase(parent->subviews_, self);
    superview_ = nullptr;
    parent->setNeedsLayout();
    parent->noteChange();
    tellWindowAboutScreens();
}

void View::tellWindowAboutScreens() {
    const auto screen = screen_.lock();
    if (!screen || !screen->parent()) {
        return;
    }
    if (const auto window = screen->windowOfScreen(); window && !window->isArranging_) {
        window->updateScreens(false);
    }
}

std::shared_ptr<View> View::find(std::string_view identifier) {
    return firstIn(shared_from_this(), [&](const View& view) { return view.identifier_ == identifier; });
}

std::shared_ptr<View> View::viewWithTag(int tag) {
    return firstIn(shared_from_this(), [&](const View& view) { return view.tag_ == tag; });
}

Window* View::rootWindow() {
    auto* root = this;
    while (root->superview_) {
        root = root->superview_;
    }
    return root->weak_from_this().expired() ? nullptr : root->asWindow();
}

std::shared_ptr<Window> View::window() {
    auto* const window = rootWindow();
    return window ? std::shared_ptr<Window>{static_cast<View*>(window)->shared_from_this(), window} : nullptr;
}

bool View::isDescendantOf(const View& view) const {
    return this == &view || (superview_ && superview_->isDescendantOf(view));
}

void View::setHidden(bool hidden) {
    if (std::exchange(isHidden_, hidden) != hidden) {
        setNeedsLayout();
        noteChange();
    }
}

bool View::isVisible() {
    if (isHidden() || alpha_ < leastVisibleAlpha) {
        return false;
    }
    return superview_ ? superview_->isVisible() : asWindow() != nullptr;
}

bool View::isReachable() {
    if (!isVisible()) {
        return false;
    }
    const View* screenView = this;
    for (auto* view = this; view; view = view->superview_) {
        if (!view->isOperable()) {
            return false;
        }
        if (const auto* window = view->asWindow()) {
            return window == this || std::ranges::any_of(window->subviewsInReach(),
                                                         [&](const auto& top) { return top.get() == screenView; });
        }
        screenView = view;
    }
    return false;
}

void View::setAlpha(double alpha) {
    alpha_ = alpha;
    noteChange();
}

void View::setBackgroundColor(std::optional<Color> color) {
    backgroundColor_ = color;
    noteChange();
}

std::optional<Color> View::tintColor() const {
    if (tintColor_) {
        return tintColor_;
    }
    return superview_ ? superview_->tintColor() : std::nullopt;
}

void View::setTintColor(std::optional<Color> color) {
    tintColor_ = color;
    noteChange();
}

void View::changeLayer(const std::function<void(Layer&)>& change) {
    const auto former = layer_;
    change(layer_);
    if (layer_ != former) {
        noteChange();
    }
}

void View::setUserInteractionEnabled(bool enabled) {
    isUserInteractionEnabled_ = enabled;
}

void View::addTapAction(std::function<void()> action) {
    tapActions_.push_back(std::move(action));
}

bool View::touch() {
    if (!isVisible()) {
        return false;
    }
    // A tap on a view that refuses input goes to the view behind.
    auto target = shared_from_this();
    for (auto view = target; view; view = view->superview()) {
        if (!view->isUserInteractionEnabled_) {
            target = view->superview();
        }
    }
    for (; target && target->isReachable(); target = target->superview()) {
        if (target->handleTouch()) {
            return true;
        }
    }
    return false;
}

bool View::handleTouch() {
    // A copy: an action may remove the view, or add another action.
    const auto actions = tapActions_;
    for (const auto& action : actions) {
        action();
    }
    return !actions.empty();
}

bool View::becomeFirstResponder() {
    const auto self = weak_from_this().lock();
    if (!self || !canBecomeFirstResponder() || keepsInputFrom(*this)) {
        return false;
    }
    const FocusChange change;
    if (const auto former = Keyboard::firstResponder(); former && former != self) {
        former->resignFirstResponder();
        if (Keyboard::firstResponder() == former) {
            return false;
        }
    }
    setFirstResponder(self);
    return true;
}

bool View::resignFirstResponder() {
    if (isFirstResponder()) {
        const FocusChange change;
        setFirstResponder(nullptr);
    }
    return true;
}

void View::scrollIntoView() {
    for (auto around = superview(); around; around = around->superview()) {
        if (const auto scroll = std::dynamic_pointer_cast<ScrollView>(around)) {
            scroll->scrollTo(*this);
        }
    }
}

bool View::isFirstResponder() const {
    return Keyboard::firstResponder().get() == this;
}

bool View::endEditing() {
    const auto responder = Keyboard::firstResponder();
    return !responder || !responder->isDescendantOf(*this) || responder->resignFirstResponder();
}

std::string View::accessibilityLabel() const {
    return accessibility().label.empty() ? shownText() : accessibility().label;
}

void View::setAccessibilityLabel(std::string label) {
    changeAccessibility([&](Accessibility& accessibility) { accessibility.label = std::move(label); });
}

const Accessibility& View::accessibility() const {
    static const Accessibility plain;
    return accessibility_ ? *accessibility_ : plain;
}

void View::changeAccessibility(const std::function<void(Accessibility&)>& change) {
    auto changed = accessibility();
    change(changed);
    if (changed == accessibility()) {
        return;
    }
    if (accessibility_) {
        *accessibility_ = std::move(changed);
    } else {
        accessibility_ = std::make_unique<Accessibility>(std::move(changed));
    }
    noteChange();
}

void View::noteChange() {
    if (const auto* const owner = rootWindow()) {
        if (const auto observer = owner->observer_.lock()) {
            observer->viewDidChange(*this);
        }
    }
}

} // namespace kivo::platform
