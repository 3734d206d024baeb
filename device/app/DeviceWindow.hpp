#pragma once

#include "Laboratory.hpp"
#include "PhoneFrame.hpp"
#include "Recording.hpp"
#include "Records.hpp"

#include <kivo/device/PhoneView.hpp>

#include <QAction>
#include <QLabel>
#include <QWidget>
#include <memory>

class QBoxLayout;
class QScrollArea;

namespace kivo::device::app {

class Chooser;
class HelpOverlay;

/// The window of kivo-device: the phone on its desk, the panel, the requests and the log.
class DeviceWindow final : public QWidget {
public:
    explicit DeviceWindow(Laboratory& laboratory);
    ~DeviceWindow() override;

    Records& records() { return *records_; }

    PhoneFrame& frame() { return *frame_; }

    /// Gives the keyboard to the phone.
    void focusPhone() { phone_->setFocus(); }

    /// Gives the tool itself light or dark colours.
    void setDark(bool isDark);

private:
    QWidget* makeTools();
    QWidget* makeDesk();
    QWidget* makeSide();
    /// A button with an action, which also answers `keys` in the whole window.
    QAction* add(QBoxLayout& row, const char* title, const char* meaning, const QKeySequence& keys,
                 const std::function<void()>& act);
    void fitModel();
    void dress();
    void takePicture(const QString& file);
    void toggleRecording();
    /// Shows a line at the upper edge for a while.
    void tell(const QString& text);

    Laboratory& laboratory_;
    device::PhoneView* phone_;
    PhoneFrame* frame_ = nullptr;
    QScrollArea* desk_ = nullptr;
    Records* records_ = nullptr;
    Chooser* model_ = nullptr;
    HelpOverlay* help_ = nullptr;
    QLabel* told_ = nullptr;
    QTimer forgetting_;
    QAction* turned_ = nullptr;
    QAction* fitted_ = nullptr;
    QAction* dark_ = nullptr;
    QAction* shot_ = nullptr;
    QAction* record_ = nullptr;
    QAction* explain_ = nullptr;
    QAction* copy_ = nullptr;
    QAction* forget_ = nullptr;
    std::unique_ptr<Recording> recording_;
};

} // namespace kivo::device::app
