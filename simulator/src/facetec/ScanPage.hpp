#pragma once

#include <kivo/platform/ui/AttributedText.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/View.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kivo::simulator {

/// Something to choose on a page.
struct Choice {
    std::string name;
    std::string title;
    std::function<void()> action;
};

/// One page of the vendor's screen: a title, a message, perhaps a picture, and choices.
class ScanPage {
public:
    ScanPage(const std::string& title, const std::string& message, std::shared_ptr<const platform::Image> picture = {});

    void offer(std::vector<Choice> choices);

    void setMessage(const platform::AttributedText& message);

    /// Takes the place of whatever `screen` shows.
    void showIn(platform::View& screen) const;

private:
    std::shared_ptr<platform::View> content_;
    std::shared_ptr<platform::Label> message_;
};

} // namespace kivo::simulator
