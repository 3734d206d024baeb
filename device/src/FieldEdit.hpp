#pragma once

#include <kivo/platform/ui/TextField.hpp>

#include <QLineEdit>
#include <functional>
#include <memory>

namespace kivo::device {

/// The line edit over a text field. Every edit of a person goes through the field's `insertText` or `deleteBackward`;
/// then the line edit shows the field's text again.
class FieldEdit final : public QLineEdit {
public:
    /// `changed` is called after a person's action on the field.
    FieldEdit(std::shared_ptr<platform::TextField> field, std::function<void()> changed, QWidget* parent);

    const std::shared_ptr<platform::TextField>& field() const { return field_; }

    /// Takes over the field's text, look and selection, with letters `zoom` times as large.
    void pull(double zoom);

    /// Off while another view covers the field. The field is then drawn with the rest of the tree.
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
    /// Moves the input to the field beside this one in a row of boxes. Returns whether the key does so.
    bool movesToNeighbour(int key);
    platform::TextRange range(qsizetype begin, qsizetype end, const QString& text) const;

    std::shared_ptr<platform::TextField> field_;
    std::function<void()> changed_;
    bool isPulling_ = false;
    bool paintsItself_ = true;
    double zoom_ = 1;
    /// The begin of the selection, or the cursor, before the edit in progress.
    qsizetype editBegins_ = 0;
};

} // namespace kivo::device
