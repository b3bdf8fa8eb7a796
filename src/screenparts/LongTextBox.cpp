#include "screenparts/LongTextBox.h"

#include "frame/composition.h"
#include "frame/plain_text.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The fonts themselves leave nothing between two lines.
constexpr int LinePixels = 15;

bool IsEnter(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

/// The part of a line that isn't composed, and what stands in its place.
void ComposeLine(const QTextBlock& line)
{
    const QString text = line.text();
    const QString composed = ComposedText(text);
    if (composed == text)
        return;
    const auto [differs, in] = std::ranges::mismatch(text, composed);
    const auto same = differs - text.begin();
    const qsizetype most = std::min(text.size(), composed.size()) - same;
    qsizetype tail = 0;
    while (tail < most && text[text.size() - 1 - tail] == composed[composed.size() - 1 - tail])
        ++tail;
    QTextCursor cursor(line);
    cursor.joinPreviousEditBlock(); // One step with what was typed.
    cursor.setPosition(line.position() + static_cast<int>(same));
    cursor.setPosition(line.position() + static_cast<int>(text.size() - tail), QTextCursor::KeepAnchor);
    cursor.insertText(composed.mid(same, composed.size() - tail - same));
    cursor.endEditBlock();
}

} // namespace

LongTextBox::LongTextBox(const QString& lineEnd, QWidget* parent) : QTextEdit(parent), m_lineEnd(lineEnd)
{
    setAcceptRichText(false);
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    KeepLinesApart();
    connect(document(), &QTextDocument::contentsChange, this, [this](int at, int, int added) {
        m_changedFrom = at;
        m_changedTo = at + added;
    });
    connect(this, &QTextEdit::textChanged, this, &LongTextBox::Compose);
}

void LongTextBox::KeepLinesApart()
{
    QTextBlockFormat apart;
    apart.setLineHeight(LinePixels, QTextBlockFormat::FixedHeight);
    // Not a step that could be taken back.
    setUndoRedoEnabled(false);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.mergeBlockFormat(apart);
    setUndoRedoEnabled(true);
    document()->setModified(false);
}

void LongTextBox::Compose()
{
    const int to = std::exchange(m_changedTo, -1);
    for (QTextBlock line = document()->findBlock(m_changedFrom); line.isValid() && line.position() <= to;
         line = line.next())
        ComposeLine(line);
}

QString LongTextBox::RawText() const
{
    QString text = document()->toRawText();
    return text.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
}

QString LongTextBox::Text() const
{
    QString text = RawText();
    const bool composing = IsComposing();
    if (!composing && text == m_givenRaw)
        return m_given;
    if (composing)
        text.insert(std::min<qsizetype>(textCursor().position(), text.size()), ComposedText(CompositionIn(this)));
    QString lineEnd = m_lineEnd;
    if (m_given.contains(u"\r\n"_s))
        lineEnd = u"\r\n"_s;
    else if (m_given.contains(u'\n'))
        lineEnd = u"\n"_s;
    return text.replace(u'\n', lineEnd);
}

void LongTextBox::setText(const QString& text)
{
    DropComposition(this);
    setPlainText(ComposedText(text));
    KeepLinesApart();
    m_given = text;
    m_givenRaw = RawText();
}

bool LongTextBox::IsComposing() const
{
    return !CompositionIn(this).isEmpty();
}

QStringList LongTextBox::ShownLines() const
{
    QStringList lines;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        // Lays the block out when it hasn't been in view yet.
        document()->documentLayout()->blockBoundingRect(block);
        const QTextLayout* layout = block.layout();
        QString text = block.text();
        if (layout->preeditAreaPosition() >= 0)
            text.insert(layout->preeditAreaPosition(), layout->preeditAreaText());
        if (layout->lineCount() == 0)
            lines << text;
        for (int line = 0; line < layout->lineCount(); ++line)
            lines << text.mid(layout->lineAt(line).textStart(), layout->lineAt(line).textLength());
    }
    return lines;
}

void LongTextBox::keyPressEvent(QKeyEvent* event)
{
    if (!IsEnter(*event) || isReadOnly()) {
        QTextEdit::keyPressEvent(event);
        return;
    }
    textCursor().insertBlock();
    ensureCursorVisible();
}

void LongTextBox::insertFromMimeData(const QMimeData* source)
{
    // As typed: a fragment would bring lines of its own height.
    textCursor().insertText(source->text());
    ensureCursorVisible();
}
