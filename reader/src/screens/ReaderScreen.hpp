#pragma once

#include "screens/Page.hpp"

#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <functional>
#include <memory>

namespace kivo::reader {

/// The reader's screen: a bar with the buttons "readerBack" and "readerClose", and one page at a time below.
class ReaderScreen final : public platform::ViewController {
public:
    explicit ReaderScreen(Look look)
        : look_{std::move(look)} {}

    /// Shows the page in place of the page before.
    void show(const Page& page);

    /// Called when a person wishes to go one page back, or to leave.
    std::function<void()> back;
    std::function<void()> close;
    /// Called once when the screen has been taken away, by the reader or by the host.
    std::function<void()> gone;

    void viewDidDisappear(bool animated) override;

protected:
    std::shared_ptr<platform::View> loadView() override;

private:
    std::shared_ptr<platform::Button> barButton(std::string_view identifier, ScreenText title,
                                                std::function<void()> ReaderScreen::* action);

    const Look look_;
    std::shared_ptr<platform::ScrollView> scroll_ = std::make_shared<platform::ScrollView>();
};

} // namespace kivo::reader
