#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/View.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kivo::platform {

/// A button in the navigation bar.
struct BarButtonItem {
    /// The button's look; `done` stands out.
    enum class Style { plain, done };

    /// The button's text, or its picture, its look, and the function that a tap calls.
    std::string title{};
    std::shared_ptr<const Image> image{};
    Style style = Style::plain;
    std::function<void()> action{};
    /// The text for screen readers; when it is empty, they use the title.
    std::string accessibilityLabel{};
};

/// The title and the buttons that a screen shows in the navigation bar while it is on top.
class KIVO_EXPORT NavigationItem {
public:
    /// The screen's title.
    const std::string& title() const { return title_; }

    void setTitle(std::string title) {
        title_ = std::move(title);
        tellChange();
    }

    /// The button at the left; absent for none, or for "Back".
    const std::optional<BarButtonItem>& leftBarButtonItem() const { return left_; }

    void setLeftBarButtonItem(std::optional<BarButtonItem> item) {
        left_ = std::move(item);
        tellChange();
    }

    /// The button at the right; absent for none.
    const std::optional<BarButtonItem>& rightBarButtonItem() const { return right_; }

    void setRightBarButtonItem(std::optional<BarButtonItem> item) {
        right_ = std::move(item);
        tellChange();
    }

private:
    friend class NavigationController;

    void tellChange() const {
        if (changed_) {
            changed_();
        }
    }

    std::string title_;
    std::optional<BarButtonItem> left_;
    std::optional<BarButtonItem> right_;
    /// Set by the bar that shows this item; called after every change.
    std::function<void()> changed_;
};

} // namespace kivo::platform
