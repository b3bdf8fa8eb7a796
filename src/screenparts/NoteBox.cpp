#include "screenparts/NoteBox.h"

#include "frame/plain_text.h"
#include "text/text_routines.h"

#include <QAbstractTextDocumentLayout>
#include <QStyle>

using namespace Qt::StringLiterals;

NoteBox::NoteBox(QWidget* parent) : LongTextBox(u"\n"_s, parent), m_further(new PlainLabel(this))
{
    m_further->setObjectName(u"furtherLines"_s);
    m_further->hide();
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            &NoteBox::ShowFurtherLines);
    connect(this, &QTextEdit::textChanged, this, &NoteBox::ShowFurtherLines);
}

void NoteBox::BeginLoading(const Visit& visit)
{
    m_visit = visit;
    m_state = State::Awaited;
    m_base.clear();
    setText(QString());
    ShowState();
}

void NoteBox::SetLoadedNote(const QString& raw)
{
    setText(Trim(raw));
    m_base = raw;
    m_state = State::Loaded;
    ShowState();
}

void NoteBox::FailLoading()
{
    m_state = State::Failed;
    ShowState();
}

void NoteBox::RestoreNote(const Visit& visit, const QString& text, const QString& base, bool touched)
{
    BeginLoading(visit);
    setText(text);
    m_base = base;
    m_state = State::Loaded;
    ShowState();
    document()->setModified(touched);
}

void NoteBox::setHistoryNote(bool on)
{
    m_historyNote = on;
    ShowState();
}

void NoteBox::ShowState()
{
    setReadOnly(m_historyNote || !IsLoaded());
    setPlaceholderText(m_state == State::Failed ? u"참고사항을 읽지 못했습니다.!!"_s : QString());
    // A style sheet looks at the property only when it is polished anew.
    style()->unpolish(this);
    style()->polish(this);
}

void NoteBox::resizeEvent(QResizeEvent* event)
{
    LongTextBox::resizeEvent(event);
    ShowFurtherLines();
}

void NoteBox::ShowFurtherLines()
{
    const int shown = viewport()->height();
    const int needed = qRound(document()->size().height() - 2 * document()->documentMargin());
    const bool hasMore = needed > shown;
    m_further->setVisible(hasMore);
    if (!hasMore)
        return;
    const int lines = static_cast<int>(ShownLines().size());
    m_further->setText(u"%1줄"_s.arg(lines));
    m_further->setAccessibleName(u"참고사항 %1줄"_s.arg(lines));
    m_further->setToolTip(ToolTipText(Text()));
    m_further->adjustSize();
    m_further->move(viewport()->geometry().bottomRight() - QPoint(m_further->width(), m_further->height()) +
                    QPoint(1, 1));
    m_further->raise();
}
