#include "DeviceWindow.hpp"

#include "HelpOverlay.hpp"
#include "Keeping.hpp"
#include "SteeringPanel.hpp"
#include "ToolLook.hpp"

#include <kivo/platform/RunLoop.hpp>

#include <QApplication>
#include <QBoxLayout>
#include <QFileDialog>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QToolButton>
#include <algorithm>
#include <chrono>
#include <utility>

namespace kivo::device::app {
namespace {

using namespace std::chrono_literals;

constexpr QSize usualSize{1240, 900};
constexpr auto timeOfNotice = 6s;
constexpr double pictureScale = 2;   // pixels for a point
constexpr double recordingScale = 1; // because every frame is compressed while the person goes on

/// Shows every request on this thread. The service records requests on threads of its own.
void showRequests(simulator::IdentityService& service, QPointer<Records> records) {
    service.onRequest([records = std::move(records)](const simulator::RecordedRequest& request) {
        platform::RunLoop::main()->async([records, request] {
            if (records) {
                records->add(request);
            }
        });
    });
}

} // namespace

DeviceWindow::DeviceWindow(Laboratory& laboratory)
    : laboratory_{laboratory}
    , phone_{std::make_unique<device::PhoneView>(laboratory.window).release()} {
    setObjectName("window");
    setAttribute(Qt::WA_StyledBackground);
    setWindowTitle("Kivo device");
    auto tools = std::unique_ptr<QWidget>{makeTools()};
    auto row = std::make_unique<QSplitter>();
    row->addWidget(makeDesk());
    row->addWidget(makeSide());
    row->setStretchFactor(0, 1);
    row->setStretchFactor(1, 2);
    row->setHandleWidth(1);
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tools.release());
    auto* const split = row.get();
    layout->addWidget(row.release(), 1);
    setLayout(layout.release());
    help_ = std::make_unique<HelpOverlay>(actions(), this).release();
    forgetting_.setSingleShot(true);
    connect(&forgetting_, &QTimer::timeout, this, [this] { told_->clear(); });
    showRequests(*laboratory.service, records_);
    // Room for the frame that a window manager draws.
    resize(usualSize.boundedTo(screen()->availableSize() - QSize{20, 60}));
    const auto forPhone = std::clamp(width() * 35 / 100, 300, 520);
    split->setSizes({forPhone, width() - forPhone});
    dress();
}

DeviceWindow::~DeviceWindow() = default;

QAction* DeviceWindow::add(QBoxLayout& row, const char* title, const char* meaning, const QKeySequence& keys,
                           const std::function<void()>& act) {
    auto* const action = addAction(title);
    action->setShortcut(keys);
    action->setToolTip(meaning);
    connect(action, &QAction::triggered, this, [act](bool) { act(); });
    auto button = std::make_unique<QToolButton>();
    button->setDefaultAction(action);
    button->setAccessibleName(title);
    button->setToolTip(QString{meaning} + " (" + keys.toString(QKeySequence::NativeText) + ")");
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    row.addWidget(button.release());
    return action;
}

QWidget* DeviceWindow::makeTools() {
    auto tools = std::make_unique<QWidget>();
    tools->setObjectName("tools");
    tools->setAttribute(Qt::WA_StyledBackground);
    auto row = std::make_unique<QHBoxLayout>();
    row->setContentsMargins(12, 7, 12, 7);
    row->setSpacing(4);
    auto model = std::make_unique<Chooser>();
    model->setAccessibleName("Device");
    for (const auto& each : models()) {
        model->addItem(QString{each.name} + "  " + QString::number(each.size.width) + " \u00D7 " +
                       QString::number(each.size.height));
    }
    model->setCurrentIndex(static_cast<int>(&usualModel() - models().data()));
    model->setMinimumWidth(220);
    model_ = model.get();
    connect(model_, &QComboBox::currentIndexChanged, this, [this] { fitModel(); });
    row->addWidget(model.release());
    turned_ = add(*row, "Turn", "Turn the phone on its side, or upright", {"Ctrl+L"}, [this] { fitModel(); });
    fitted_ = add(*row, "Fit", "Shrink the phone into its room, or show every point as a pixel", {"Ctrl+0"},
                  [this] { frame_->setFitted(fitted_->isChecked()); });
    for (auto* const each : {turned_, fitted_}) {
        each->setCheckable(true);
    }
    fitted_->setChecked(true);
    auto told = std::make_unique<QLabel>();
    told->setProperty("faint", true);
    told->setTextInteractionFlags(Qt::TextSelectableByMouse);
    told->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    told->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    told_ = told.get();
    row->addWidget(told.release(), 1);
    shot_ = add(*row, "Picture", "Keep a picture of the display, two pixels a point", {"Ctrl+P"},
                [this] { takePicture(newPictureFile()); });
    record_ = add(*row, "Record", "Record the display as an animated PNG, or end the recording", {"Ctrl+R"},
                  [this] { toggleRecording(); });
    dark_ = add(*row, "Dark", "Give this tool dark colours, or light ones", {"Ctrl+D"},
                [this] { setDark(dark_->isChecked()); });
    dark_->setCheckable(true);
    dark_->setChecked(isToolDark());
    explain_ = add(*row, "Keys", "List what the keys do", {"F1"}, [this] { help_->open(); });
    tools->setLayout(row.release());

    const auto addKeys = [this](const char* meaning, const QKeySequence& keys, const std::function<void()>& act) {
        auto* const action = addAction(meaning);
        action->setShortcut(keys);
        connect(action, &QAction::triggered, this, act);
        return action;
    };
    addKeys("Choose the file of a picture", {"Ctrl+Shift+P"}, [this] {
        const auto file = QFileDialog::getSaveFileName(this, "Keep a picture", newPictureFile(), "Pictures (*.png)");
        if (!file.isEmpty()) {
            takePicture(file);
        }
    });
    addKeys("Give the keyboard to the phone", {"Ctrl+E"}, [this] { focusPhone(); });
    copy_ = addKeys("Copy the requests or the log", {"Ctrl+Shift+C"}, [this] {
        records_->copy();
        tell("Copied.");
    });
    forget_ = addKeys("Forget the requests or the log", {"Ctrl+K"}, [this] { records_->clear(); });
    addKeys("End", QKeySequence::Quit, [this] { close(); });
    return tools.release();
}

QWidget* DeviceWindow::makeDesk() {
    auto area = std::make_unique<QScrollArea>();
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    auto frame = std::make_unique<PhoneFrame>(phone_);
    frame_ = frame.get();
    area->setWidget(frame.release());
    // When the phone has moved its focus, and perhaps scrolled, the area follows.
    connect(
        qApp, &QApplication::focusChanged, area.get(),
        [area = area.get(), phone = QPointer{phone_}] {
            auto* const focused = QApplication::focusWidget();
            if (phone && focused != nullptr && focused != phone && phone->isAncestorOf(focused)) {
                area->ensureWidgetVisible(focused);
            }
        },
        Qt::QueuedConnection);
    desk_ = area.get();
    return area.release();
}

QWidget* DeviceWindow::makeSide() {
    auto side = std::make_unique<QSplitter>(Qt::Vertical);
    side->setObjectName("side");
    side->setAttribute(Qt::WA_StyledBackground);
    auto panel = std::make_unique<SteeringPanel>(
        Steered{.window = laboratory_.window,
                .service = laboratory_.service,
                .camera = laboratory_.camera,
                .readID = laboratory_.readID,
                .faceTec = laboratory_.faceTec,
                .documentReaders = laboratory_.documentReaders,
                .passport = laboratory_.passport,
                .setTheme = [this](const auto& theme) { laboratory_.host->setTheme(theme); },
                .speak = [this](const auto& language) { laboratory_.speak(language); },
                .setAnimated = [this](bool isAnimated) { phone_->setAnimated(isAnimated); }});
    auto area = std::make_unique<QScrollArea>();
    area->setObjectName("side");
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const auto heightOfPanel = panel->sizeHint().height();
    area->setMinimumWidth(panel->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    area->setWidget(panel.release());
    auto records = std::make_unique<Records>();
    records_ = records.get();
    auto corner = std::make_unique<QWidget>();
    auto buttons = std::make_unique<QHBoxLayout>();
    buttons->setContentsMargins(0, 0, 0, 3);
    buttons->setSpacing(2);
    for (auto* const action : {copy_, forget_}) {
        auto button = std::make_unique<QToolButton>();
        button->setDefaultAction(action);
        button->setAccessibleName(action->text());
        button->setToolTip(action->text() + " (" + action->shortcut().toString(QKeySequence::NativeText) + ")");
        buttons->addWidget(button.release());
    }
    corner->setLayout(buttons.release());
    records->setCornerWidget(corner.release());
    auto around = std::make_unique<QWidget>();
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(12, 2, 12, 12);
    layout->addWidget(records.release());
    around->setLayout(layout.release());
    side->addWidget(area.release());
    side->addWidget(around.release());
    side->setStretchFactor(0, 0);
    side->setStretchFactor(1, 1);
    side->setSizes({heightOfPanel + 20, heightOfPanel / 2});
    return side.release();
}

void DeviceWindow::fitModel() {
    frame_->setModel(models().at(static_cast<std::size_t>(model_->currentIndex())), turned_->isChecked());
}

void DeviceWindow::setDark(bool isDark) {
    dark_->setChecked(isDark);
    dressApplication(isDark);
    dress();
}

void DeviceWindow::dress() {
    const auto& text = toolColors(isToolDark()).text;
    turned_->setIcon(icon(Symbol::turn, text));
    fitted_->setIcon(icon(Symbol::fit, text));
    dark_->setIcon(icon(Symbol::moon, text));
    shot_->setIcon(icon(Symbol::camera, text));
    record_->setIcon(icon(recording_ ? Symbol::stop : Symbol::record, text));
    explain_->setIcon(icon(Symbol::help, text));
    copy_->setIcon(icon(Symbol::copy, text));
    forget_->setIcon(icon(Symbol::clear, text));
    records_->dress();
}

void DeviceWindow::takePicture(const QString& file) {
    const auto kept = keep(file, asPng(frame_->picture(pictureScale)));
    tell(kept ? "Kept as " + file : QString::fromStdString(kept.error()));
}

void DeviceWindow::toggleRecording() {
    if (!recording_) {
        recording_ = std::make_unique<Recording>([this] { return frame_->picture(recordingScale); },
                                                 [this] { toggleRecording(); });
        tell("The display is being recorded.");
    } else {
        const auto file = newPictureFile();
        const auto kept = keep(file, recording_->file());
        // Deleted later: the recording may be ending by itself, in a call of its own timer.
        std::exchange(recording_, nullptr).release()->deleteLater();
        tell(kept ? "Recorded as " + file : QString::fromStdString(kept.error()));
    }
    record_->setText(recording_ ? "End" : "Record");
    dress();
}

void DeviceWindow::tell(const QString& text) {
    told_->setText(text);
    told_->setToolTip(text);
    forgetting_.start(timeOfNotice);
}

} // namespace kivo::device::app
