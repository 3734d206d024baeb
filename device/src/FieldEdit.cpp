#include "FieldEdit.hpp"

#include "Content.hpp"
#include "Text.hpp"

#include <kivo/platform/Text.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QPalette>
#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace kivo::device {
namespace {

/// The length of the first `count` user-perceived characters, in Qt's units.
qsizetype length(const std::string& text, std::size_t count) {
    return toQt(text::firstCharacters(text, count).value_or(text)).size();
}

/// The font in another size. A size in pixels would be a whole number.
QFont enlarged(QFont font, double zoom, double pixelsOfInch) {
    if (zoom != 1) {
        constexpr double pointsOfInch = 72;
        if (font.letterSpacingType() == QFont::AbsoluteSpacing) {
            font.setLetterSpacing(QFont::AbsoluteSpacing, font.letterSpacing() * zoom);
        }
        font.setPointSizeF(font.pixelSize() * zoom * pointsOfInch / pixelsOfInch);
    }
    return font;
}

} // namespace

FieldEdit::FieldEdit(std::shared_ptr<platform::TextField> field, std::function<void()> changed, QWidget* parent)
    : QLineEdit{parent}
    , field_{std::move(field)}
    , changed_{std::move(changed)} {
    setFrame(false);
    // A host's style sheet is for the host's own fields.
    setStyleSheet("background: transparent; border: none; padding: 0; margin: 0;");
    setAttribute(Qt::WA_TransparentForMouseEvents); // `Finger` finds the touched view
    connect(this, &QLineEdit::textEdited, this, &FieldEdit::apply);
    connect(this, &QLineEdit::cursorPositionChanged, this, &FieldEdit::pushSelection);
    connect(this, &QLineEdit::selectionChanged, this, &FieldEdit::pushSelection);
    pull(1);
}

void FieldEdit::pull(double zoom) {
    isPulling_ = true;
    zoom_ = zoom;
    auto colors = palette();
    const auto plain = field_->textColor();
    const auto& attributes = field_->attributedText();
    colors.setColor(QPalette::Text, toQt(attributes ? attributes->foregroundColor.value_or(plain) : plain,
                                         field_->userInterfaceStyle()));
    colors.setColor(QPalette::PlaceholderText, placeholderColor(*field_));
    colors.setColor(QPalette::Base, Qt::transparent);
    if (colors != palette()) {
        setPalette(colors);
    }
    if (const auto wanted = enlarged(shownFont(*field_), zoom, logicalDpiY()); wanted != font()) {
        setFont(wanted);
    }
    setAlignment(toQt(field_->textAlignment()) | Qt::AlignVCenter);
    setPlaceholderText(toQt(field_->placeholder()));
    setReadOnly(!field_->canBecomeFirstResponder());
    setFocusPolicy(field_->canBecomeFirstResponder() ? Qt::StrongFocus : Qt::NoFocus);
    const auto& hints = field_->keyboardType() == platform::KeyboardType::numberPad ? Qt::ImhDigitsOnly : Qt::ImhNone;
    setInputMethodHints(hints | (field_->isAutocorrected() ? Qt::ImhNone : Qt::ImhNoPredictiveText));
    if (const auto wanted = toQt(field_->text()); wanted != text()) {
        setText(wanted);
    }
    const auto [location, count] = field_->selection();
    const auto begin = static_cast<int>(length(field_->text(), location));
    const auto end = static_cast<int>(length(field_->text(), location + count));
    if (count > 0 && (selectionStart() != begin || selectionEnd() != end)) {
        setSelection(begin, end - begin);
    } else if (count == 0 && (hasSelectedText() || cursorPosition() != begin)) {
        setCursorPosition(begin);
    }
    editBegins_ = begin;
    isPulling_ = false;
}

void FieldEdit::setPaintsItself(bool paints) {
    if (std::exchange(paintsItself_, paints) != paints) {
        update();
    }
}

bool FieldEdit::event(QEvent* event) {
    if (event->type() == QEvent::DeferredDelete) {
        return QLineEdit::event(event); // the event deletes this object
    }
    const auto taken = QLineEdit::event(event);
    editBegins_ = hasSelectedText() ? selectionStart() : cursorPosition();
    return taken;
}

void FieldEdit::keyPressEvent(QKeyEvent* event) {
    const bool isAtStart = cursorPosition() == 0 && !hasSelectedText();
    if (event->key() == Qt::Key_Backspace && isAtStart) {
        // There is nothing to delete, but a box for one digit may pass the keyboard back to the box before.
        field_->deleteBackward();
        changed_();
        return;
    }
    if (event->modifiers() == Qt::NoModifier && movesToNeighbour(event->key())) {
        changed_();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

bool FieldEdit::movesToNeighbour(int key) {
    const auto row = std::dynamic_pointer_cast<platform::StackView>(field_->superview());
    const bool isBox = row && row->axis() == platform::StackView::Axis::horizontal && text().size() <= 1;
    if (!isBox || (key != Qt::Key_Left && key != Qt::Key_Right)) {
        return false;
    }
    const auto& boxes = row->subviews();
    const bool isMirrored = row->layoutDirection() == platform::LayoutDirection::rightToLeft;
    const auto step = (key == Qt::Key_Right) == isMirrored ? -1 : 1;
    const auto next = std::ranges::find(boxes, field_) - boxes.begin() + step;
    if (next >= 0 && next < std::ssize(boxes)) {
        boxes[static_cast<std::size_t>(next)]->becomeFirstResponder();
    }
    return true;
}

platform::TextRange FieldEdit::range(qsizetype begin, qsizetype end, const QString& text) const {
    const auto count = [&](qsizetype units) { return text::characterCount(text.left(units).toStdString()); };
    return {.location = count(begin), .length = count(end) - count(begin)};
}

void FieldEdit::apply(const QString& edited) {
    const auto former = toQt(field_->text());
    const auto behind = std::min(edited.size() - cursorPosition(), former.size());
    const auto furthest = std::min({former.size() - behind, edited.size() - behind, editBegins_});
    qsizetype begin = 0;
    while (begin < furthest && former[begin] == edited[begin]) {
        ++begin;
    }
    const auto inserted = edited.mid(begin, edited.size() - behind - begin).toStdString();
    field_->setSelection(range(begin, former.size() - behind, former));
    if (inserted.empty()) {
        field_->deleteBackward();
    } else if (text::characterCount(inserted) == 1) {
        field_->insertText(inserted);
    } else {
        field_->paste(inserted); // no key brings more than a character at once
    }
    field_->scrollIntoView();
    pull(zoom_);
    changed_();
}

void FieldEdit::pushSelection() {
    // While an edit is in progress, the field still has its former text.
    if (isPulling_ || text() != toQt(field_->text())) {
        return;
    }
    const auto begin = hasSelectedText() ? selectionStart() : cursorPosition();
    const auto end = hasSelectedText() ? selectionEnd() : cursorPosition();
    field_->setSelection(range(begin, end, text()));
}

void FieldEdit::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    field_->scrollIntoView();
    field_->becomeFirstResponder();
    changed_();
}

void FieldEdit::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    const bool isLeft = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (isLeft && field_->isFirstResponder()) {
        // Without `changed_`: the focus is still on its way to the next widget, and would be taken back.
        field_->resignFirstResponder();
    }
}

void FieldEdit::paintEvent(QPaintEvent* event) {
    if (paintsItself_) {
        QLineEdit::paintEvent(event);
    }
}

} // namespace kivo::device
