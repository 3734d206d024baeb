#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QString>
#include <QWidget>
#include <deque>

namespace kivo::device::app {

/// The library's log, with the lines from a level on that contain a text.
class LogView final : public QWidget {
public:
    explicit LogView(QWidget* parent = nullptr);

    void add(const QString& line);

    /// Copies the chosen text or, without one, all lines that are shown.
    void copy();
    void clear();

    /// Takes the colours of the tool anew.
    void dress();

private:
    struct Line {
        QString text;
        int level;
    };

    bool isShown(const Line& line) const;
    void append(const Line& line);
    /// Shows the lines that pass the filter.
    void fill();

    std::deque<Line> lines_;
    QComboBox* least_;
    QLineEdit* wanted_;
    QPlainTextEdit* text_;
};

} // namespace kivo::device::app
