#include "HelpOverlay.hpp"

#include "ToolLook.hpp"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <utility>

namespace kivo::device::app {
namespace {

constexpr int rowHeight = 32;
constexpr int cardWidth = 520;
constexpr int cardMargin = 28;
constexpr int cardHead = 44;

} // namespace

HelpOverlay::HelpOverlay(const QList<QAction*>& actions, QWidget* window)
    : QWidget{window} {
    setAccessibleName("Shortcuts");
    setFocusPolicy(Qt::StrongFocus);
    QStringList spoken;
    for (const auto* const action : actions) {
        if (!action->shortcut().isEmpty()) {
            lines_.append(Line{action->shortcut().toString(QKeySequence::NativeText), action->toolTip()});
        }
    }
    lines_.append(Line{"Tab", "Go on to the next control, also on the phone"});
    lines_.append(Line{"Esc", "Leave a field, an alert or a screen of the phone"});
    for (const auto& [keys, meaning] : lines_) {
        spoken.append(keys + ": " + meaning);
    }
    setAccessibleDescription(spoken.join(". "));
    window->installEventFilter(this);
    hide();
}

void HelpOverlay::open() {
    formerFocus_ = QApplication::focusWidget();
    setGeometry(parentWidget()->rect());
    show();
    raise();
    setFocus();
}

void HelpOverlay::close() {
    hide();
    if (auto* const former = std::exchange(formerFocus_, nullptr)) {
        former->setFocus();
    }
}

bool HelpOverlay::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        setGeometry(parentWidget()->rect());
    }
    return QWidget::eventFilter(watched, event);
}

void HelpOverlay::paintEvent(QPaintEvent* /*event*/) {
    const auto& colors = toolColors(isToolDark());
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor{0, 0, 0, 120});
    QRect card{0, 0, std::min(cardWidth, width() - 20),
               cardHead + 2 * cardMargin + static_cast<int>(lines_.size()) * rowHeight};
    card.moveCenter(rect().center());
    painter.setPen(colors.line);
    painter.setBrush(colors.card);
    painter.drawRoundedRect(QRectF{card}.adjusted(0.5, 0.5, -0.5, -0.5), 14, 14);
    const auto inner = card.adjusted(cardMargin, cardMargin, -cardMargin, -cardMargin);
    auto font = this->font();
    font.setPixelSize(19);
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(colors.text);
    painter.drawText(inner.x(), inner.y() + 19, "What the keys do");
    font.setPixelSize(13);
    auto line = QRect{inner.x(), inner.y() + cardHead, inner.width(), rowHeight};
    for (const auto& [keys, meaning] : lines_) {
        font.setWeight(QFont::Normal);
        painter.setFont(font);
        painter.setPen(colors.text);
        painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft, meaning);
        font.setWeight(QFont::Medium);
        painter.setFont(font);
        QRect key{0, 0, painter.fontMetrics().horizontalAdvance(keys) + 18, 23};
        key.moveCenter(line.center());
        key.moveRight(line.right());
        painter.setPen(colors.line);
        painter.setBrush(colors.ground);
        painter.drawRoundedRect(QRectF{key}.adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        painter.setPen(colors.faintText);
        painter.drawText(key, Qt::AlignCenter, keys);
        line.translate(0, rowHeight);
    }
}

void HelpOverlay::mousePressEvent(QMouseEvent* /*event*/) {
    close();
}

void HelpOverlay::keyPressEvent(QKeyEvent* /*event*/) {
    close();
}

void HelpOverlay::focusOutEvent(QFocusEvent* /*event*/) {
    hide();
}

} // namespace kivo::device::app
