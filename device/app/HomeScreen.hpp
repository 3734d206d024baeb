#pragma once

#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <functional>
#include <memory>
#include <string>

namespace kivo::device::app {

/// The host's own start screen: a list of what can be done, and a line for what came of it.
class HomeScreen final : public platform::ViewController {
public:
    void setTitle(const std::string& title);
    void add(const std::string& identifier, const std::string& title, std::function<void()> action);
    void say(const std::string& text);

protected:
    std::shared_ptr<platform::View> loadView() override;

private:
    std::shared_ptr<platform::StackView> list_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::Label> outcome_ = std::make_shared<platform::Label>();
};

} // namespace kivo::device::app
