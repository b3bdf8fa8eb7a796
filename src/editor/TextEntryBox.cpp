#include "editor/TextEntryBox.h"

#include "frame/composition.h"

#include <QFocusEvent>
#include <QFontMetrics>
#include <QInputMethodEvent>
#include <QKeyEvent>

using namespace Qt::StringLiterals;

namespace {
constexpr int CaretPixels = 4;
/// What the platform's line edit keeps free beside and above its text.
constexpr int EditMarginX = 2;
constexpr int EditMarginY = 1;
} // namespace

TextEntryBox::TextEntryBox(QWidget* parent) : QLineEdit(parent)
{
    setFrame(false);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setTextMargins(-EditMarginX, -EditMarginY, -EditMarginX, -EditMarginY);
    setCursor(Qt::IBeamCursor);
    connect(this, &QLineEdit::textChanged, this, &TextEntryBox::GrowWithText);
}

void TextEntryBox::Open(const QRect& place, qreal pointPixels, const QColor& colour)
{
    clear();
    QFont shown = m_textFont;
    shown.setPixelSize(qMax(1, qRound(m_textFont.pointSizeF() * pointPixels)));
    // The dark ground lets every colour be read, and the picture be seen.
    setStyleSheet(u"QLineEdit { background: rgba(20, 25, 30, 150); color: %1; border: none; padding: 0px; }"_s.arg(
        colour.name()));
    setFont(shown);
    m_leastSize = place.size();
    move(place.topLeft());
    GrowWithText();
    show();
    raise();
    setFocus(Qt::OtherFocusReason);
}

void TextEntryBox::Close()
{
    DropComposition(this);
    hide();
    clear();
}

void TextEntryBox::GrowWithText()
{
    const QFontMetrics metrics(font());
    const QSize needed(metrics.horizontalAdvance(TextOf(*this)) + CaretPixels, metrics.height());
    resize(m_leastSize.expandedTo(needed));
}

void TextEntryBox::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT Entered();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void TextEntryBox::inputMethodEvent(QInputMethodEvent* event)
{
    QLineEdit::inputMethodEvent(event);
    GrowWithText();
}

void TextEntryBox::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    // The box's own menu of cut and paste isn't somewhere else.
    if (event->reason() != Qt::PopupFocusReason)
        Q_EMIT FocusLost();
}
