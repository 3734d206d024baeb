#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kivo::platform {
namespace {

constexpr double boxWidth = 270;
constexpr double boxMargin = 16;
constexpr double boxSpacing = 8;

class AlertBox final : public StackView {
public:
    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::alert; }
};

void addText(StackView& box, std::string identifier, const std::string& text) {
    const auto label = std::make_shared<Label>();
    label->setIdentifier(std::move(identifier));
    label->setText(text);
    label->setTextAlignment(TextAlignment::center);
    label->setTextColor(Color::adaptive(Color::black(), Color::white()));
    label->setHidden(text.empty());
    box.addSubview(label);
}

} // namespace

std::shared_ptr<View> AlertController::loadView() {
    const auto box = std::make_shared<AlertBox>();
    box->setIdentifier("alert");
    box->setBackgroundColor(Color::adaptive(Color::white(), Color::white(0.17)));
    box->changeLayer([](Layer& layer) { layer.cornerRadius = 14; });
    box->setPlacement({.centerX = 0, .centerY = 0, .width = boxWidth});
    box->setMargins({.top = boxMargin, .left = boxMargin, .bottom = boxMargin, .right = boxMargin});
    box->setSpacing(boxSpacing);
    addText(*box, "alertTitle", title_);
    addText(*box, "alertMessage", message_);
    const std::weak_ptr weak{std::static_pointer_cast<AlertController>(shared_from_this())};
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        const auto button = std::make_shared<Button>();
        button->setIdentifier(actions_[i].title);
        button->setTitle(actions_[i].title);
        button->addAction(ControlEvent::touchUpInside, [weak, i](const auto&) {
            if (const auto self = weak.lock()) {
                self->choose(i);
            }
        });
        box->addSubview(button);
    }
    auto dimmed = std::make_shared<View>();
    dimmed->setBackgroundColor(Color::adaptive(Color::white(0, 0.2), Color::white(0, 0.5)));
    dimmed->addSubview(box);
    return dimmed;
}

void AlertController::cancel() {
    const auto found = std::ranges::find(actions_, ActionStyle::cancel, &Action::style);
    choose(static_cast<std::size_t>(std::distance(actions_.begin(), found)) - (found == actions_.end() ? 1 : 0));
}

void AlertController::choose(std::size_t index) {
    // An alert under another screen takes no answer.
    if (index >= actions_.size() || presentedViewController() || std::exchange(isAnswered_, true)) {
        return;
    }
    dismiss(true, std::move(actions_[index].handler));
}

} // namespace kivo::platform
