#include "LogView.hpp"

#include "ToolLook.hpp"

#include <kivo/LogLevel.hpp>

#include <QBoxLayout>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScrollBar>
#include <QTextCharFormat>
#include <QTextCursor>
#include <algorithm>
#include <array>
#include <memory>

namespace kivo::device::app {
namespace {

constexpr std::size_t mostLines = 5000;

/// A level with the sign that begins its lines.
struct Level {
    char16_t sign;
    LogLevel level;
    const char* name;
};

constexpr std::array levels{
    Level{u'\u27A1', LogLevel::verbose, "All lines"},   Level{u'\u2753', LogLevel::debug, "Debug and above"},
    Level{u'\u2139', LogLevel::info, "Info and above"}, Level{u'\u26A0', LogLevel::warning, "Warnings and errors"},
    Level{u'\u274C', LogLevel::error, "Errors"},
};

/// The level of a line, or `former` for a line that goes on with the line before.
int levelOf(const QString& line, int former) {
    const auto* const found = std::ranges::find_if(
        levels, [&](const Level& each) { return !line.isEmpty() && line.front() == QChar{each.sign}; });
    return found == levels.end() ? former : static_cast<int>(found->level);
}

} // namespace

LogView::LogView(QWidget* parent)
    : QWidget{parent} {
    auto least = std::make_unique<Chooser>();
    least->setAccessibleName("Level");
    for (const auto& each : levels) {
        least->addItem(each.name, static_cast<int>(each.level));
    }
    auto wanted = std::make_unique<QLineEdit>();
    wanted->setAccessibleName("Only lines with");
    wanted->setPlaceholderText("Only lines with\u2026");
    wanted->setClearButtonEnabled(true);
    auto text = std::make_unique<QPlainTextEdit>();
    text->setAccessibleName("Log");
    text->setReadOnly(true);
    text->setFrameShape(QFrame::NoFrame);
    text->setMaximumBlockCount(static_cast<int>(mostLines));
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    least_ = least.get();
    wanted_ = wanted.get();
    text_ = text.get();
    connect(least_, &QComboBox::currentIndexChanged, this, [this] { fill(); });
    connect(wanted_, &QLineEdit::textChanged, this, [this] { fill(); });
    auto filter = std::make_unique<QHBoxLayout>();
    filter->setContentsMargins(8, 8, 8, 4);
    filter->addWidget(least.release());
    filter->addWidget(wanted.release(), 1);
    auto layout = std::make_unique<QVBoxLayout>();
    layout->setContentsMargins(1, 0, 1, 1);
    layout->setSpacing(0);
    layout->addLayout(filter.release());
    layout->addWidget(text.release());
    setLayout(layout.release());
}

void LogView::add(const QString& line) {
    lines_.push_back({line, levelOf(line, lines_.empty() ? static_cast<int>(LogLevel::info) : lines_.back().level)});
    if (lines_.size() > mostLines) {
        lines_.pop_front();
    }
    append(lines_.back());
}

bool LogView::isShown(const Line& line) const {
    return line.level >= least_->currentData().toInt() && line.text.contains(wanted_->text(), Qt::CaseInsensitive);
}

void LogView::append(const Line& line) {
    if (!isShown(line)) {
        return;
    }
    const auto& colors = toolColors(isToolDark());
    auto* const bar = text_->verticalScrollBar();
    // A person who reads further up stays there.
    const bool isAtEnd = bar->value() >= bar->maximum();
    QTextCharFormat format;
    format.setForeground(line.level >= static_cast<int>(LogLevel::error)     ? colors.bad
                         : line.level >= static_cast<int>(LogLevel::warning) ? colors.caution
                         : line.level >= static_cast<int>(LogLevel::info)    ? colors.text
                                                                             : colors.faintText);
    QTextCursor cursor{text_->document()};
    cursor.movePosition(QTextCursor::End);
    if (!text_->document()->isEmpty()) {
        cursor.insertBlock();
    }
    cursor.insertText(line.text, format);
    if (isAtEnd) {
        bar->setValue(bar->maximum());
    }
}

void LogView::fill() {
    text_->clear();
    for (const auto& line : lines_) {
        append(line);
    }
}

void LogView::dress() {
    fill();
}

void LogView::copy() {
    const auto chosen = text_->textCursor().selectedText().replace(QChar::ParagraphSeparator, '\n');
    QGuiApplication::clipboard()->setText(chosen.isEmpty() ? text_->toPlainText() : chosen);
}

void LogView::clear() {
    lines_.clear();
    text_->clear();
}

} // namespace kivo::device::app
