#include "SteeringPanel.hpp"

#include <QAbstractItemView>
#include <QBoxLayout>
#include <QCheckBox>
#include <QEvent>
#include <QFileDialog>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <utility>

namespace kivo::device::app {
namespace {

using namespace std::chrono_literals;

constexpr auto refreshInterval = 200ms;

/// A new widget at the end of a layout, whose parent owns the widget.
template <class Widget, class... Arguments>
Widget& add(QBoxLayout& layout, Arguments&&... arguments) {
    auto widget = std::make_unique<Widget>(std::forward<Arguments>(arguments)...);
    auto& added = *widget;
    layout.addWidget(widget.release());
    return added;
}

/// A new widget in a new row of a form. The label is also the widget's name for assistive technology.
template <class Widget, class... Arguments>
Widget& addRow(QFormLayout& layout, const QString& label, Arguments&&... arguments) {
    auto widget = std::make_unique<Widget>(std::forward<Arguments>(arguments)...);
    auto& added = *widget;
    added.setAccessibleName(label);
    layout.addRow(label, widget.release());
    return added;
}

struct NamedReading {
    const char* name;
    simulator::Reading (*make)();
};

using platform::readid::FailureReason;
using simulator::Reading;

const std::array readings{
    NamedReading{"A person decides on the screen", [] { return Reading::byPerson(); }},
    NamedReading{"Page and chip are read", [] { return Reading::pageAndChip(); }},
    NamedReading{"The page alone is read", [] { return Reading::page(); }},
    NamedReading{"The chip cannot be read", [] { return Reading::failure(FailureReason::nfcError, true); }},
    NamedReading{"There is no chip", [] { return Reading::failure(FailureReason::noChip); }},
    NamedReading{"The person gives up", [] { return Reading::failure(FailureReason::userCancelled); }},
};

struct NamedScan {
    const char* name;
    bool waitsForPerson;
    int faceStatus;
    int cardStatus;
    int retries;
};

namespace face = simulator::faceScanStatus;
namespace card = simulator::idScanStatus;

constexpr std::array scans{
    NamedScan{"A person decides on the screen", true, face::completed, card::completed, 0},
    NamedScan{"The scan is good", false, face::completed, card::completed, 0},
    NamedScan{"The second scan is good", false, face::completed, card::completed, 1},
    NamedScan{"The person gives up", false, face::cancelled, card::cancelled, 0},
    NamedScan{"The camera is refused", false, face::cameraRefused, card::cameraRefused, 0},
    NamedScan{"It takes too long", false, face::timeout, card::timeout, 0},
};

} // namespace

SteeringPanel::SteeringPanel(Steered steered, QWidget* parent)
    : QWidget{parent}
    , steered_{std::move(steered)} {
    auto layout = std::make_unique<QVBoxLayout>();
    addService(add<QGroupBox>(*layout, "What the service does next"));
    addCamera(add<QGroupBox>(*layout, "What the camera sees"));
    addVendors(add<QGroupBox>(*layout, "How the vendors' scans end"));
    addLook(add<QGroupBox>(*layout, "How the phone and the host look"));
    layout->addStretch();
    setLayout(layout.release());
    for (auto* const chooser : findChildren<QWidget*>()) {
        if (qobject_cast<QComboBox*>(chooser) != nullptr || qobject_cast<QSlider*>(chooser) != nullptr) {
            chooser->installEventFilter(this);
        }
    }
    connect(&refreshing_, &QTimer::timeout, this, &SteeringPanel::refresh);
    refreshing_.start(refreshInterval);
    refresh();
}

bool SteeringPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Wheel) {
        // The wheel scrolls the panel, and does not choose under way.
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void SteeringPanel::refresh() {
    QStringList faults;
    for (const auto& [endpoint, fault, callsLeft] : steered_.service->pendingFaults()) {
        const auto& all = simulator::namedFaults();
        const auto known = std::ranges::find(all, fault, &simulator::NamedFault::fault);
        const bool meetsAll = fault.kind() == simulator::Fault::Kind::certificate;
        faults.append((meetsAll ? QString{"everywhere"} : QString::fromUtf8(simulator::name(endpoint))) + ": " +
                      (known == all.end() ? QString{"a fault"} : QString::fromUtf8(known->name)) +
                      (callsLeft ? ", once" : ""));
    }
    faults_->setText(faults.isEmpty() ? QString{"behaves"} : faults.join('\n'));
    if (steered_.readID->planned() == 0 && !nextDocument_->view()->isVisible()) {
        nextDocument_->setCurrentIndex(0);
    }
}

void SteeringPanel::addService(QGroupBox& box) {
    auto form = std::make_unique<QFormLayout>();
    auto& endpoint = addRow<QComboBox>(*form, "Endpoint");
    for (const auto each : simulator::allEndpoints) {
        endpoint.addItem(QString::fromUtf8(simulator::name(each)));
    }
    auto& fault = addRow<QComboBox>(*form, "Fault");
    for (const auto& each : simulator::namedFaults()) {
        auto meaning = QString::fromUtf8(each.meaning);
        meaning.front() = meaning.front().toUpper();
        fault.addItem(meaning);
    }
    auto& once = addRow<QCheckBox>(*form, "", "The next call only");
    once.setAccessibleName(once.text());
    once.setChecked(true);
    auto& inject = addRow<QPushButton>(*form, "", "Misbehave");
    inject.setAccessibleName(inject.text());
    auto& clear = addRow<QPushButton>(*form, "", "Behave again");
    clear.setAccessibleName(clear.text());
    faults_ = &addRow<QLabel>(*form, "Now");
    connect(&inject, &QPushButton::clicked, this, [this, &endpoint, &fault, &once] {
        steered_.service->inject(simulator::allEndpoints.at(static_cast<std::size_t>(endpoint.currentIndex())),
                                 simulator::namedFaults().at(static_cast<std::size_t>(fault.currentIndex())).fault,
                                 once.isChecked() ? simulator::Calls::only(1) : simulator::Calls::all());
        refresh();
    });
    connect(&clear, &QPushButton::clicked, this, [this] {
        steered_.service->clearFaults();
        refresh();
    });
    box.setLayout(form.release());
}

void SteeringPanel::addCamera(QGroupBox& box) {
    auto form = std::make_unique<QFormLayout>();
    auto& text = addRow<QLineEdit>(*form, "QR code's text", R"({"code":"123456"})");
    auto& show = addRow<QPushButton>(*form, "", "Hold the QR code up");
    show.setAccessibleName(show.text());
    auto& picture = addRow<QPushButton>(*form, "", "Hold a picture file up\u2026");
    picture.setAccessibleName(picture.text());
    auto& hide = addRow<QPushButton>(*form, "", "Take it away");
    hide.setAccessibleName(hide.text());
    auto& state = addRow<QLabel>(*form, "Now", "nothing");
    connect(&show, &QPushButton::clicked, this, [this, &text, &state] {
        try {
            steered_.camera->showCode(text.text().toStdString());
            state.setText("a QR code");
        } catch (const std::runtime_error& error) {
            state.setText(error.what());
        }
    });
    connect(&picture, &QPushButton::clicked, this, [this, &state] {
        const auto file =
            QFileDialog::getOpenFileName(this, "A picture with a code", {}, "Pictures (*.png *.jpg *.jpeg)");
        if (!file.isEmpty()) {
            steered_.camera->showPicture(file.toStdString());
            state.setText(file);
        }
    });
    connect(&hide, &QPushButton::clicked, this, [this, &state] {
        steered_.camera->showNothing();
        state.setText("nothing");
    });
    box.setLayout(form.release());
}

void SteeringPanel::addVendors(QGroupBox& box) {
    auto form = std::make_unique<QFormLayout>();
    auto& reading = addRow<QComboBox>(*form, "Next document");
    nextDocument_ = &reading;
    for (const auto& each : readings) {
        reading.addItem(each.name);
    }
    connect(&reading, &QComboBox::activated, this,
            [this](int index) { steered_.readID->plan({readings.at(static_cast<std::size_t>(index)).make()}); });
    auto& scan = addRow<QComboBox>(*form, "Face and card");
    for (const auto& each : scans) {
        scan.addItem(each.name);
    }
    const auto plan = [this](int index) {
        const auto& chosen = scans.at(static_cast<std::size_t>(index));
        steered_.faceTec->waitsForPerson = chosen.waitsForPerson;
        steered_.faceTec->faceScan.status = chosen.faceStatus;
        steered_.faceTec->idScan.status = chosen.cardStatus;
        for (auto* script : {&steered_.faceTec->faceScan, &steered_.faceTec->idScan}) {
            script->retries = chosen.retries;
            script->scanTime = 1s;
        }
    };
    plan(0);
    connect(&scan, &QComboBox::currentIndexChanged, this, plan);
    box.setLayout(form.release());
}

void SteeringPanel::addLook(QGroupBox& box) {
    auto form = std::make_unique<QFormLayout>();
    auto& size = addRow<QSlider>(*form, "Reading size", Qt::Horizontal);
    using Sizes = RawValues<platform::ContentSizeCategory>;
    size.setRange(Sizes::first, Sizes::last);
    size.setValue(static_cast<int>(steered_.window->preferredContentSizeCategory()));
    connect(&size, &QSlider::valueChanged, this, [this](int value) {
        steered_.window->setPreferredContentSizeCategory(static_cast<platform::ContentSizeCategory>(value));
    });
    auto& display = addRow<QComboBox>(*form, "Display");
    display.addItems({"390 x 844 points", "320 x 568 points", "430 x 932 points"});
    connect(&display, &QComboBox::currentIndexChanged, this, [this](int index) {
        constexpr std::array sizes{platform::Size{390, 844}, platform::Size{320, 568}, platform::Size{430, 932}};
        steered_.window->setSize(sizes.at(static_cast<std::size_t>(index)));
    });
    auto& theme = addRow<QComboBox>(*form, "Theme");
    for (const auto& each : themePresets()) {
        theme.addItem(each.name);
    }
    auto& dark = addRow<QCheckBox>(*form, "", "Dark colours of the host");
    dark.setAccessibleName(dark.text());
    const auto apply = [this, &theme, &dark] {
        steered_.look->setDark(dark.isChecked());
        steered_.setLook(themePresets().at(static_cast<std::size_t>(theme.currentIndex())).make(dark.isChecked()));
    };
    connect(&theme, &QComboBox::currentIndexChanged, this, apply);
    connect(&dark, &QCheckBox::toggled, this, apply);
    addRow<QLabel>(*form, "", "The SDK's screens change from the next screen on.");
    box.setLayout(form.release());
}

} // namespace kivo::device::app
