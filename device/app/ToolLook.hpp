#pragma once

#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QIcon>
#include <QString>

namespace kivo::device::app {

/// The colours of the tool around the phone.
struct ToolColors {
    QColor desk;
    QColor ground;
    QColor card;
    QColor line;
    QColor text;
    QColor faintText;
    QColor accent;
    QColor textOnAccent;
    QColor good;
    QColor caution;
    QColor bad;
};

const ToolColors& toolColors(bool isDark);

/// Whether the desktop's own colours are dark.
bool isDesktopDark();

/// Gives the whole application the colours and the typeface of the tool.
void dressApplication(bool isDark);

/// Whether the application has the dark colours now.
bool isToolDark();

enum class Symbol { turn, moon, fit, camera, record, stop, help, copy, clear };

QIcon icon(Symbol symbol, const QColor& color);

/// A combo box drawn as the tool's other parts are. The wheel scrolls what lies around, and does not choose under way.
class Chooser final : public QComboBox {
public:
    explicit Chooser(QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    static constexpr int height_ = 29;
};

/// A check box drawn as a switch.
class Switch final : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& position) const override;
};

} // namespace kivo::device::app
