#include "WindowPicture.hpp"

#include "WindowContrast.hpp"
#include "app/DeviceWindow.hpp"
#include "app/Laboratory.hpp"
#include "app/ToolLook.hpp"
#include "program/Temporary.hpp"

#include <kivo/SdkVersions.hpp>
#include <kivo/device/TextContrast.hpp>
#include <kivo/simulator/FaultText.hpp>
#include <kivo/simulator/Person.hpp>

#include <QApplication>
#include <QLabel>
#include <QSize>
#include <QTime>
#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace kivo::device::pictures {
namespace {

constexpr QSize laptop{1346, 716}; // 1366 x 768 without a frame and a task bar
constexpr auto timeOnThePhone = "9:30";
constexpr double leastContrastOfTool = 4.5;

void require(const simulator::Person::Outcome& outcome) {
    if (!outcome) {
        throw std::runtime_error{outcome.error()};
    }
}

/// Joins a session, sends an update, and opens the choice of a document.
void walk(app::Laboratory& laboratory) {
    simulator::Person person{laboratory.window};
    const auto isHome = [&](const char* outcome) { return [&person, outcome] { return person.sees(outcome); }; };
    require(person.tap("enterCode"));
    require(person.type("textFieldDigitOne", "123456"));
    require(person.waitFor(isHome("You have joined the session.")));
    laboratory.service->inject(simulator::Endpoint::status, simulator::faultFromText("status:503").value(),
                               simulator::Calls::only(1));
    require(person.tap("status"));
    require(person.waitFor([&] { return laboratory.service->requests().size() == 2; }));
    require(person.waitFor([&] { return laboratory.window->find("alertMessage") != nullptr; }));
    require(person.chooseInAlert("OK"));
    require(person.tap("update"));
    require(person.waitFor(isHome("The service has the update.")));
    laboratory.service->inject(simulator::Endpoint::commit, simulator::faultFromText("delay:2s").value(),
                               simulator::Calls::only(1));
    require(person.tap("readDocument"));
}

/// Prints how well the texts of the tool stand out, and throws where one does not.
void requireContrast(app::DeviceWindow& window, platform::Window& phone, const QImage& picture) {
    const auto found = widgetContrast(window, window.frame(), picture);
    std::printf("%d texts of the tool, least contrast %.1f of %.1f\n", found.texts, found.least, leastContrastOfTool);
    for (const auto& each : textContrasts(phone)) {
        if (each.contrast < each.least) {
            throw std::runtime_error{"on the phone a text hardly stands out: " + each.text};
        }
    }
    if (found.texts == 0 || found.least < leastContrastOfTool) {
        throw std::runtime_error{"a text of the tool hardly stands out"};
    }
}

} // namespace

QImage windowPicture(bool isDark) {
    const program::TemporaryFolder folder{"kivo-pictures"};
    app::dressApplication(isDark);
    app::Laboratory laboratory{std::string{SdkVersions::all().back()}, folder};
    app::DeviceWindow window{laboratory};
    window.frame().setTime(timeOnThePhone);
    window.records().setClock([time = QTime{9, 30}]() mutable { return time = time.addMSecs(1370); });
    laboratory.start();
    for (auto* const each : window.findChildren<app::Switch*>()) {
        each->setChecked(each->isChecked() || (isDark && each->accessibleName() == "Dark appearance"));
    }
    window.resize(laptop);
    window.show();
    window.focusPhone();
    walk(laboratory);
    // The panel asks the simulator for its state a few times a second.
    require(simulator::Person{laboratory.window}.waitFor([&] {
        QApplication::processEvents();
        const auto labels = window.findChildren<QLabel*>();
        return std::ranges::any_of(labels, [](const auto* each) { return each->text() == "commit: slow, once"; });
    }));
    QApplication::processEvents();
    auto picture = window.grab().toImage();
    picture.setDevicePixelRatio(1);
    requireContrast(window, *laboratory.window, picture);
    return picture;
}

} // namespace kivo::device::pictures
