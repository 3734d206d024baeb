#include "ToolLook.hpp"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <QWheelEvent>

namespace kivo::device::app {
namespace {

constexpr int letterSize = 13;
constexpr double choiceCorner = 7;

// Fields and buttons only of the side: those on the phone look as the phone draws them.
constexpr auto sheet = R"(
QWidget#desk, QWidget#window { background: @desk; }
QWidget#tools { background: @ground; border-bottom: 1px solid @line; }
QWidget#side, QWidget#panel, QScrollArea#side { background: @ground; }
QToolTip { background: @card; color: @text; border: 1px solid @line; padding: 4px 6px; }
QGroupBox { background: @card; border: 1px solid @line; border-radius: 10px; margin: 0; padding: 30px 4px 4px 4px; font-weight: 600; }
QGroupBox::title { subcontrol-origin: border; subcontrol-position: top left; left: 13px; top: 11px; color: @text; }
QLabel { color: @text; background: transparent; }
QLabel[faint="true"] { color: @faint; }
#side QPushButton { background: @card; color: @text; border: 1px solid @line; border-radius: 7px; padding: 5px 11px; font-weight: 500; }
#side QPushButton:hover, QToolButton:hover { background: @hover; }
#side QPushButton:pressed, QToolButton:pressed { background: @line; }
#side QPushButton:focus, #side QLineEdit:focus, QToolButton:focus { border: 1px solid @accent; }
#side QPushButton[primary="true"] { background: @accent; color: @onAccent; border: 1px solid @accent; }
#side QPushButton[primary="true"]:focus { border: 1px solid @text; }
QToolButton { background: transparent; color: @text; border: 1px solid transparent; border-radius: 7px; padding: 5px 8px; font-weight: 500; }
QToolButton:checked { background: @hover; border: 1px solid @line; }
#side QLineEdit { background: @card; color: @text; border: 1px solid @line; border-radius: 7px; padding: 5px 8px; selection-background-color: @accent; }
QComboBox QAbstractItemView { background: @card; color: @text; border: 1px solid @line; outline: none; selection-background-color: @accent; selection-color: @onAccent; }
QTabWidget::pane { border: 1px solid @line; border-radius: 10px; background: @card; top: -1px; }
QTabBar::tab { background: transparent; color: @faint; padding: 7px 14px; border: none; border-bottom: 2px solid transparent; font-weight: 500; }
QTabBar::tab:selected { color: @text; border-bottom: 2px solid @accent; }
QTabBar::tab:focus { color: @accent; }
QTreeView, QPlainTextEdit { background: @card; color: @text; border: none; border-radius: 10px; selection-background-color: @accent; selection-color: @onAccent; }
QTreeView::item { padding: 3px 5px; }
QHeaderView::section { background: @card; color: @faint; border: none; border-bottom: 1px solid @line; padding: 6px 8px; font-weight: 500; }
QSplitter::handle { background: transparent; }
QScrollBar:vertical { background: transparent; width: 11px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 11px; margin: 0; }
QScrollBar::handle { background: @line; border-radius: 4px; margin: 2px; min-height: 28px; min-width: 28px; }
QScrollBar::handle:hover { background: @faint; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QSlider::groove:horizontal { height: 4px; border-radius: 2px; background: @line; }
QSlider::sub-page:horizontal { height: 4px; border-radius: 2px; background: @accent; }
QSlider::handle:horizontal { width: 16px; margin: -6px 0; border-radius: 8px; background: @accent; border: 0; }
QSlider::handle:horizontal:focus { background: @text; }
)";

QColor between(const QColor& one, const QColor& other, double part) {
    const auto mix = [&](int a, int b) { return static_cast<int>(a + (b - a) * part); };
    return {mix(one.red(), other.red()), mix(one.green(), other.green()), mix(one.blue(), other.blue())};
}

bool& toolIsDark() {
    static bool isDark = false;
    return isDark;
}

/// The strokes of a symbol on a field of 20 by 20.
QPainterPath strokesOf(Symbol symbol) {
    QPainterPath path;
    switch (symbol) {
    case Symbol::turn:
        path.addRoundedRect(QRectF{2.5, 8.5, 9, 9}, 2, 2);
        path.moveTo(9, 3);
        path.arcTo(QRectF{5, 3, 11, 11}, 90, -90);
        path.moveTo(13.5, 7);
        path.lineTo(16, 9.4);
        path.lineTo(18.4, 7);
        break;
    case Symbol::moon:
        path.moveTo(16.5, 11.8);
        path.arcTo(QRectF{3.2, 3.2, 13.6, 13.6}, -15, -255);
        path.arcTo(QRectF{7.6, -0.4, 11.4, 12.6}, 170, 115);
        break;
    case Symbol::fit:
        for (const auto& [x, y] : {std::pair{3, 3}, {17, 3}, {17, 17}, {3, 17}}) {
            const int right = x < 10 ? 4 : -4;
            const int down = y < 10 ? 4 : -4;
            path.moveTo(x + right, y);
            path.lineTo(x, y);
            path.lineTo(x, y + down);
        }
        break;
    case Symbol::camera:
        path.addRoundedRect(QRectF{2.5, 5.5, 15, 11}, 2.5, 2.5);
        path.addEllipse(QPointF{10, 11}, 3, 3);
        path.moveTo(7, 5.5);
        path.lineTo(8.2, 3.5);
        path.lineTo(11.8, 3.5);
        path.lineTo(13, 5.5);
        break;
    case Symbol::record:
    case Symbol::stop:
        path.addEllipse(QPointF{10, 10}, 7, 7);
        break;
    case Symbol::help:
        path.addEllipse(QPointF{10, 10}, 7.5, 7.5);
        path.moveTo(7.8, 8);
        path.cubicTo(7.8, 5, 12.4, 5.2, 12.2, 8);
        path.cubicTo(12.1, 9.6, 10, 9.6, 10, 11.6);
        path.moveTo(10, 13.9);
        path.lineTo(10, 14.1);
        break;
    case Symbol::copy:
        path.addRoundedRect(QRectF{7, 7, 10, 10}, 2, 2);
        path.moveTo(13, 4.5);
        path.lineTo(13, 3);
        path.lineTo(3, 3);
        path.lineTo(3, 13);
        path.lineTo(4.5, 13);
        break;
    case Symbol::clear:
        path.moveTo(3.5, 5.5);
        path.lineTo(16.5, 5.5);
        path.moveTo(5.2, 5.5);
        path.lineTo(6, 17);
        path.lineTo(14, 17);
        path.lineTo(14.8, 5.5);
        path.moveTo(8, 5.5);
        path.lineTo(8, 3);
        path.lineTo(12, 3);
        path.lineTo(12, 5.5);
        break;
    }
    return path;
}

} // namespace

const ToolColors& toolColors(bool isDark) {
    static const ToolColors light{.desk = "#e7eaf0",
                                  .ground = "#f6f7f9",
                                  .card = "#ffffff",
                                  .line = "#d9dee6",
                                  .text = "#171a20",
                                  .faintText = "#596273",
                                  .accent = "#2357d5",
                                  .textOnAccent = "#ffffff",
                                  .good = "#0f7040",
                                  .caution = "#8a5a00",
                                  .bad = "#b3261e"};
    static const ToolColors dark{.desk = "#252a33",
                                 .ground = "#14171c",
                                 .card = "#1b1f26",
                                 .line = "#323945",
                                 .text = "#e9ecf1",
                                 .faintText = "#a1aaba",
                                 .accent = "#7aa7ff",
                                 .textOnAccent = "#0b1220",
                                 .good = "#5ed29a",
                                 .caution = "#f0bd63",
                                 .bad = "#ff8a80"};
    return isDark ? dark : light;
}

bool isDesktopDark() {
    constexpr int middle = 128;
    return QApplication::palette().color(QPalette::Window).lightness() < middle;
}

bool isToolDark() {
    return toolIsDark();
}

void dressApplication(bool isDark) {
    toolIsDark() = isDark;
    const auto& colors = toolColors(isDark);
    QApplication::setStyle("Fusion");
    QPalette palette;
    palette.setColor(QPalette::Window, colors.ground);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.card);
    palette.setColor(QPalette::AlternateBase, colors.ground);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.faintText);
    palette.setColor(QPalette::Button, colors.card);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::Mid, colors.line);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.textOnAccent);
    palette.setColor(QPalette::Link, colors.accent);
    palette.setColor(QPalette::ToolTipBase, colors.card);
    palette.setColor(QPalette::ToolTipText, colors.text);
    QApplication::setPalette(palette);
    QFont font{QFontDatabase::families().contains("Inter") ? QFont{"Inter"} : QApplication::font()};
    font.setPixelSize(letterSize);
    QApplication::setFont(font);
    QString text{sheet};
    for (const auto& [name, color] : {std::pair{"@desk", colors.desk},
                                      {"@ground", colors.ground},
                                      {"@card", colors.card},
                                      {"@line", colors.line},
                                      {"@text", colors.text},
                                      {"@faint", colors.faintText},
                                      {"@accent", colors.accent},
                                      {"@onAccent", colors.textOnAccent},
                                      {"@hover", between(colors.card, colors.line, 0.45)}}) {
        text.replace(name, color.name());
    }
    qApp->setStyleSheet(text);
}

QIcon icon(Symbol symbol, const QColor& color) {
    constexpr int field = 20;
    QIcon made;
    for (const int density : {1, 2, 3}) {
        QPixmap pixels{field * density, field * density};
        pixels.setDevicePixelRatio(density);
        pixels.fill(Qt::transparent);
        QPainter painter{&pixels};
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen{color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
        painter.drawPath(strokesOf(symbol));
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor{214, 48, 49});
        if (symbol == Symbol::record) {
            painter.drawEllipse(QPointF{10, 10}, 4.2, 4.2);
        } else if (symbol == Symbol::stop) {
            painter.drawRoundedRect(QRectF{6.8, 6.8, 6.4, 6.4}, 1.2, 1.2);
        }
        painter.end();
        made.addPixmap(pixels);
    }
    return made;
}

Chooser::Chooser(QWidget* parent)
    : QComboBox{parent} {
    constexpr int fewLetters = 10;
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(fewLetters);
}

QSize Chooser::sizeHint() const {
    return {QComboBox::sizeHint().width(), height_};
}

void Chooser::paintEvent(QPaintEvent* /*event*/) {
    const auto& colors = toolColors(isToolDark());
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen{hasFocus() ? colors.accent : colors.line, 1});
    painter.setBrush(underMouse() ? between(colors.card, colors.line, 0.25) : colors.card);
    painter.drawRoundedRect(QRectF{rect()}.adjusted(0.5, 0.5, -0.5, -0.5), choiceCorner, choiceCorner);
    painter.setPen(isEnabled() ? colors.text : colors.faintText);
    const auto room = rect().adjusted(10, 0, -26, 0);
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(currentText(), Qt::ElideRight, room.width()));
    painter.setPen(QPen{colors.faintText, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
    const QPointF tip{width() - 14.0, height() / 2.0 + 2};
    painter.drawPolyline(QPolygonF{{tip + QPointF{-4, -4}, tip, tip + QPointF{4, -4}}});
}

void Chooser::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

namespace {

constexpr QSize pill{34, 20};
constexpr int pillGap = 9;

} // namespace

QSize Switch::sizeHint() const {
    return {pill.width() + pillGap + fontMetrics().horizontalAdvance(text()) + 2,
            std::max(pill.height() + 4, fontMetrics().height())};
}

bool Switch::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void Switch::paintEvent(QPaintEvent* /*event*/) {
    const auto& colors = toolColors(isToolDark());
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track{1.0, (height() - pill.height()) / 2.0, 1.0 * pill.width(), 1.0 * pill.height()};
    painter.setPen(hasFocus() ? QPen{colors.text, 1.5} : QPen{Qt::NoPen});
    painter.setBrush(isChecked() ? colors.accent : between(colors.line, colors.faintText, 0.35));
    painter.drawRoundedRect(track, pill.height() / 2.0, pill.height() / 2.0);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? colors.textOnAccent : QColor{Qt::white});
    const auto knob = pill.height() / 2.0;
    painter.drawEllipse(QPointF{isChecked() ? track.right() - knob : track.left() + knob, track.center().y()}, knob - 3,
                        knob - 3);
    painter.setPen(isEnabled() ? colors.text : colors.faintText);
    painter.drawText(rect().adjusted(pill.width() + pillGap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, text());
}

} // namespace kivo::device::app
