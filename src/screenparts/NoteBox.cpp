#include "screenparts/NoteBox.h"

#include "frame/composition.h"

#include <QStyle>

using namespace Qt::StringLiterals;

NoteBox::NoteBox(QWidget* parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
}

QString NoteBox::Text() const
{
    QString text = toPlainText();
    if (IsComposing())
        text.insert(qMin<qsizetype>(textCursor().position(), text.size()), CompositionIn(this));
    return m_crlf ? text.replace(u'\n', u"\r\n"_s) : text;
}

bool NoteBox::IsComposing() const
{
    return !CompositionIn(this).isEmpty();
}

void NoteBox::BeginLoading(const Visit& visit)
{
    m_visit = visit;
    m_state = State::Awaited;
    m_crlf = false;
    setPlainText(QString());
    MarkUntouched();
    ShowState();
}

void NoteBox::SetLoadedNote(const QString& note)
{
    m_crlf = note.contains(u"\r\n"_s);
    setPlainText(note);
    MarkUntouched();
    m_state = State::Loaded;
    ShowState();
}

void NoteBox::FailLoading()
{
    m_state = State::Failed;
    ShowState();
}

void NoteBox::RestoreNote(const Visit& visit, const QString& text, bool touched)
{
    BeginLoading(visit);
    SetLoadedNote(text);
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
