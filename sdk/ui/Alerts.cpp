#include "ui/Alerts.hpp"

#include <kivo/platform/ui/AlertController.hpp>

#include <memory>
#include <utility>

namespace kivo::ui {

void showAlert(platform::ViewController& screen, std::string title, std::string message,
               const std::vector<std::string>& actions, const std::function<void(std::size_t)>& handler) {
    const auto alert = std::make_shared<platform::AlertController>(std::move(title), std::move(message));
    for (std::size_t index = 0; index < actions.size(); ++index) {
        alert->addAction({.title = actions[index], .handler = [handler, index] { handler(index); }});
    }
    screen.present(alert, /*animated=*/true);
}

} // namespace kivo::ui
