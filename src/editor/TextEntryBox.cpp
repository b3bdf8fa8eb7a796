#include "editor/TextEntryBox.h"

#include "frame/composition.h"
#include "frame/plain_text.h"
#include "frame/wrapped_text.h"

#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>

using namespace Qt::StringLiterals;

namespace {
constexpr int CaretPixels = 4;
/// Characters: far more than can be read on any picture.
constexpr qsizetype LongestPaste = 4000;
} // namespace

TextEntryBox::TextEntryBox(QWidget* parent) : QPlainTextEdit(parent)
{
    setFrameShape(QFrame::NoFrame);
    document()->setDocumentMargin(0);
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setCursor(Qt::IBeamCursor);
    connect(this, &QPlainTextEdit::textChanged, this, &TextEntryBox::GrowWithText);
}

QString TextEntryBox::Text() const
{
    QString text = toPlainText();
    text.insert(textCursor().position(), CompositionIn(this));
    return ComposedText(text);
}

void TextEntryBox::Open(const QRect& place, const QRect& room, qreal pointPixels, const QColor& colour)
{
    clear();
    m_shownFont = m_textFont;
    m_shownFont.setPixelSize(qMax(1, qRound(m_textFont.pointSizeF() * pointPixels)));
    // The dark ground lets every colour be read, and the picture be seen.
    setStyleSheet(u"QPlainTextEdit { background: rgba(20, 25, 30, 150); color: %1; border: none; padding: 0px; }"_s.arg(
        colour.name()));
    m_place = place;
    m_room = room;
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
    const WrappedText wrapped = WrapInto(Text(), m_shownFont, m_room.size() - QSize(CaretPixels, 0));
    if (font() != wrapped.font)
        setFont(wrapped.font);
    const QSize needed = wrapped.size.toSize() + QSize(CaretPixels, 0);
    const QSize box = m_place.size().boundedTo(m_room.size()).expandedTo(needed);
    setGeometry({MovedIn(QRectF(m_place.topLeft(), needed), m_room).toPoint(), box});
}

void TextEntryBox::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT Entered();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void TextEntryBox::inputMethodEvent(QInputMethodEvent* event)
{
    QPlainTextEdit::inputMethodEvent(event);
    GrowWithText();
}

void TextEntryBox::focusOutEvent(QFocusEvent* event)
{
    QPlainTextEdit::focusOutEvent(event);
    // The box's own menu of cut and paste isn't somewhere else.
    if (event->reason() != Qt::PopupFocusReason)
        Q_EMIT FocusLost();
}

void TextEntryBox::insertFromMimeData(const QMimeData* source)
{
    // One line, whatever it was.
    textCursor().insertText(source->text().left(LongestPaste).simplified());
}
