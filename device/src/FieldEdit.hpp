#pragma once

#include <kivo/platform/ui/TextField.hpp>

#include <QLineEdit>
#include <functional>
#include <memory>

namespace kivo::device {

/// The line edit behind a text field: a person edits here, and every change goes through the field's own doors.
/// Afterwards the edit shows what the field made of it.
class FieldEdit final : public QLineEdit {
public:
    /// `changed` is called after a person did something to the field.
    FieldEdit(std::shared_ptr<platform::TextField> field, std::function<void()> changed, QWidget* parent);

    const std::shared_ptr<platform::TextField>& field() const { return field_; }

    /// Takes over the field's text, look and selection.
    void pull();

    /// Off while something covers the field: then it is drawn with the rest of the tree.
    void setPaintsItself(bool paints);

    bool paintsItself() const { return paintsItself_; }

    bool event(QEvent* event) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void apply(const QString& edited);
    void pushSelection();
    platform::TextRange range(qsizetype begin, qsizetype end, const QString& text) const;

    std::shared_ptr<platform::TextField> field_;
    std::function<void()> changed_;
    bool isPulling_ = false;
    bool paintsItself_ = true;
    /// Where the selection, or the cursor, began before the edit in progress.
    qsizetype editBegins_ = 0;
};

} // namespace kivo::device
