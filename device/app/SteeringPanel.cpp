#include "SteeringPanel.hpp"

#include "ToolLook.hpp"

#include <QAbstractItemView>
#include <QBoxLayout>
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

constexpr int widthOfTwoColumns = 620;
constexpr int labelWidth = 92;

/// A new widget in a new row of a form. The label is also the widget's name for assistive technology.
template <class Widget, class... Arguments>
Widget& addRow(QFormLayout& layout, const QString& label, Arguments&&... arguments) {
    auto widget = std::make_unique<Widget>(std::forward<Arguments>(arguments)...);
    auto& added = *widget;
    added.setAccessibleName(label);
    auto name = std::make_unique<QLabel>(label);
    name->setProperty("faint", true);
    name->setMinimumWidth(labelWidth);
    layout.addRow(name.release(), widget.release());
    return added;
}

/// A row of buttons with these titles.
template <std::size_t count>
std::array<QPushButton*, count> addButtons(QFormLayout& layout, const std::array<const char*, count>& titles) {
    std::array<QPushButton*, count> added{};
    auto row = std::make_unique<QHBoxLayout>();
    row->setSpacing(8);
    for (std::size_t i = 0; i < count; ++i) {
        auto button = std::make_unique<QPushButton>(titles.at(i));
        button->setAccessibleName(titles.at(i));
        button->setProperty("primary", i == 0);
        added.at(i) = button.get();
        row->addWidget(button.release());
    }
    row->addStretch();
    layout.addRow("", row.release());
    return added;
}

std::unique_ptr<QFormLayout> form() {
    auto made = std::make_unique<QFormLayout>();
    made->setContentsMargins(10, 4, 10, 8);
    made->setVerticalSpacing(8);
    made->setHorizontalSpacing(10);
    made->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    made->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return made;
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
    setObjectName("panel");
    auto grid = std::make_unique<QGridLayout>();
    grid->setContentsMargins(12, 12, 12, 8);
    grid->setSpacing(10);
    grid_ = grid.get();
    setLayout(grid.release());
    const auto add = [this](const char* title, void (SteeringPanel::*fill)(QGroupBox&)) {
        auto part = std::make_unique<QGroupBox>(title);
        (this->*fill)(*part);
        parts_.push_back(part.get());
        part.release()->setParent(this);
    };
    add("What the service does next", &SteeringPanel::addService);
    add("What the camera sees", &SteeringPanel::addCamera);
    add("How the vendors' scans end", &SteeringPanel::addVendors);
    if (steered_.documentReaders && steered_.documentReaders->choices().size() > 1) {
        add("What reads documents", &SteeringPanel::addDocumentReader);
    }
    add("How the phone and the host look", &SteeringPanel::addLook);
    arrange();
    connect(&refreshing_, &QTimer::timeout, this, &SteeringPanel::refresh);
    refreshing_.start(refreshInterval);
    refresh();
}

void SteeringPanel::resizeEvent(QResizeEvent* /*event*/) {
    arrange();
}

void SteeringPanel::arrange() {
    const int columns = width() >= widthOfTwoColumns ? 2 : 1;
    if (columns == std::exchange(columns_, columns)) {
        return;
    }
    for (int i = 0; i < static_cast<int>(parts_.size()); ++i) {
        auto* const part = parts_.at(static_cast<std::size_t>(i));
        grid_->removeWidget(part);
        grid_->addWidget(part, i / columns, i % columns);
    }
    grid_->setColumnStretch(0, 1);
    grid_->setColumnStretch(1, columns - 1);
    grid_->setRowStretch(static_cast<int>(parts_.size()), 1);
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
    auto rows = form();
    auto& endpoint = addRow<Chooser>(*rows, "Endpoint");
    for (const auto each : simulator::allEndpoints) {
        endpoint.addItem(QString::fromUtf8(simulator::name(each)));
    }
    auto& fault = addRow<Chooser>(*rows, "Fault");
    for (const auto& each : simulator::namedFaults()) {
        auto meaning = QString::fromUtf8(each.meaning);
        meaning.front() = meaning.front().toUpper();
        fault.addItem(meaning);
    }
    auto& once = addRow<Switch>(*rows, "", "The next call only");
    once.setAccessibleName(once.text());
    once.setChecked(true);
    const auto [inject, clear] = addButtons<2>(*rows, {"Misbehave", "Behave again"});
    faults_ = &addRow<QLabel>(*rows, "Now");
    connect(inject, &QPushButton::clicked, this, [this, &endpoint, &fault, &once] {
        steered_.service->inject(simulator::allEndpoints.at(static_cast<std::size_t>(endpoint.currentIndex())),
                                 simulator::namedFaults().at(static_cast<std::size_t>(fault.currentIndex())).fault,
                                 once.isChecked() ? simulator::Calls::only(1) : simulator::Calls::all());
        refresh();
    });
    connect(clear, &QPushButton::clicked, this, [this] {
        steered_.service->clearFaults();
        refresh();
    });
    box.setLayout(rows.release());
}

void SteeringPanel::addCamera(QGroupBox& box) {
    auto rows = form();
    auto& text = addRow<QLineEdit>(*rows, "QR code's text", R"({"code":"123456"})");
    const auto [show] = addButtons<1>(*rows, {"Hold the QR code up"});
    const auto [picture, hide] = addButtons<2>(*rows, {"Hold a picture file up\u2026", "Take it away"});
    picture->setProperty("primary", false);
    auto& state = addRow<QLabel>(*rows, "Now", "nothing");
    connect(show, &QPushButton::clicked, this, [this, &text, &state] {
        try {
            steered_.camera->showCode(text.text().toStdString());
            state.setText("a QR code");
        } catch (const std::runtime_error& error) {
            state.setText(error.what());
        }
    });
    connect(picture, &QPushButton::clicked, this, [this, &state] {
        const auto file =
            QFileDialog::getOpenFileName(this, "A picture with a code", {}, "Pictures (*.png *.jpg *.jpeg)");
        if (!file.isEmpty()) {
            steered_.camera->showPicture(file.toStdString());
            state.setText(file);
        }
    });
    connect(hide, &QPushButton::clicked, this, [this, &state] {
        steered_.camera->showNothing();
        state.setText("nothing");
    });
    box.setLayout(rows.release());
}

void SteeringPanel::addVendors(QGroupBox& box) {
    auto rows = form();
    auto& reading = addRow<Chooser>(*rows, "Next document");
    nextDocument_ = &reading;
    for (const auto& each : readings) {
        reading.addItem(each.name);
    }
    connect(&reading, &QComboBox::activated, this,
            [this](int index) { steered_.readID->plan({readings.at(static_cast<std::size_t>(index)).make()}); });
    auto& scan = addRow<Chooser>(*rows, "Face and card");
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
    box.setLayout(rows.release());
}

void SteeringPanel::addDocumentReader(QGroupBox& box) {
    auto rows = form();
    auto& reader = addRow<Chooser>(*rows, "Reader");
    for (const auto& each : steered_.documentReaders->choices()) {
        reader.addItem(QString::fromStdString(each.name));
    }
    connect(&reader, &QComboBox::currentIndexChanged, this,
            [this](int index) { steered_.documentReaders->choose(static_cast<std::size_t>(index)); });
    if (steered_.passport) {
        addPassport(*rows);
    }
    box.setLayout(rows.release());
}

void SteeringPanel::addPassport(QFormLayout& rows) {
    const auto& passport = steered_.passport;
    auto& chip = addRow<Chooser>(rows, "The chip");
    chip.addItem("works");
    for (const auto& each : simulator::namedChipFaults()) {
        chip.addItem(QString::fromUtf8(each.meaning));
    }
    auto& onReader = addRow<Switch>(rows, "", "On the card reader");
    onReader.setAccessibleName(onReader.text());
    onReader.setChecked(true);
    connect(&onReader, &QCheckBox::toggled, this, [passport](bool isOn) {
        if (isOn) {
            passport->layDown();
        } else {
            passport->takeAway();
        }
    });
    connect(&chip, &QComboBox::currentIndexChanged, this, [passport, &onReader](int index) {
        const auto& faults = simulator::namedChipFaults();
        passport->setFault(index == 0 ? std::optional<simulator::ChipFault>{}
                                      : faults.at(static_cast<std::size_t>(index - 1)).fault);
        passport->layDown();
        onReader.setChecked(true);
    });
    // What a person types who has no camera.
    auto& page =
        addRow<QLabel>(rows, "Its page",
                       QString::fromStdString(passport->documentNumber() + ", born " + passport->dateOfBirth() +
                                              ",\nexpires " + passport->dateOfExpiry() + " (YYMMDD)"));
    page.setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void SteeringPanel::addLook(QGroupBox& box) {
    auto rows = form();
    auto& size = addRow<QSlider>(*rows, "Reading size", Qt::Horizontal);
    using Sizes = RawValues<platform::ContentSizeCategory>;
    size.setMinimumHeight(24);
    size.setRange(Sizes::first, Sizes::last);
    size.setValue(static_cast<int>(steered_.window->preferredContentSizeCategory()));
    connect(&size, &QSlider::valueChanged, this, [this](int value) {
        steered_.window->setPreferredContentSizeCategory(static_cast<platform::ContentSizeCategory>(value));
    });
    auto& theme = addRow<Chooser>(*rows, "Theme");
    for (const auto& each : themePresets()) {
        theme.addItem(each.name);
    }
    theme.setToolTip("The SDK's screens wear the theme from the next screen on");
    const auto setTheme = [this, &theme] {
        steered_.setTheme(themePresets().at(static_cast<std::size_t>(theme.currentIndex())).make());
    };
    connect(&theme, &QComboBox::currentIndexChanged, this, setTheme);
    if (steered_.speak) {
        auto& language = addRow<Chooser>(*rows, "Language");
        for (const auto& [name, title] : languages) {
            language.addItem(QString::fromUtf8(title), QString{name});
        }
        language.setToolTip("The phone returns to the host, and the next screens speak the language");
        connect(&language, &QComboBox::currentIndexChanged, this, [this, &language, setTheme] {
            steered_.speak(language.currentData().toString().toStdString());
            setTheme(); // made anew, because a theme takes some of its texts from the tables
        });
    }
    auto& dark = addRow<Switch>(*rows, "", "Dark appearance");
    dark.setAccessibleName(dark.text());
    connect(&dark, &Switch::toggled, this, [this](bool isDark) {
        steered_.window->setUserInterfaceStyle(isDark ? platform::UserInterfaceStyle::dark
                                                      : platform::UserInterfaceStyle::light);
    });
    if (steered_.setAnimated) {
        auto& less = addRow<Switch>(*rows, "", "Less motion");
        less.setAccessibleName(less.text());
        connect(&less, &Switch::toggled, this, [this](bool isOn) { steered_.setAnimated(!isOn); });
    }
    box.setLayout(rows.release());
}

} // namespace kivo::device::app
