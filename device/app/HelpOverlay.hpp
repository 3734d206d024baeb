#pragma once

#include <QAction>
#include <QList>
#include <QWidget>

namespace kivo::device::app {

/// A page over the window that lists what the keys do. Any key and any click take the page away.
class HelpOverlay final : public QWidget {
public:
    /// Lists the shortcuts of `actions` over `window`, which owns the overlay.
    HelpOverlay(const QList<QAction*>& actions, QWidget* window);

    void open();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    struct Line {
        QString keys;
        QString meaning;
    };

    void close();

    QList<Line> lines_;
    QWidget* formerFocus_ = nullptr;
};

} // namespace kivo::device::app
