#include "records/NoteBox.h"

#include <QStyle>

using namespace Qt::StringLiterals;

NoteBox::NoteBox(QWidget* parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
}

void NoteBox::BeginLoading(const QString& ymd, const QString& section)
{
    m_ymd = ymd;
    m_section = section;
    m_loaded = false;
    setPlainText(QString());
    document()->setModified(false);
    ShowState();
}

void NoteBox::SetLoadedNote(const QString& note)
{
    setPlainText(note);
    document()->setModified(false);
    m_loaded = true;
    ShowState();
}

void NoteBox::RestoreNote(const QString& ymd, const QString& section, const QString& text, bool touched)
{
    BeginLoading(ymd, section);
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
    setReadOnly(m_historyNote || !m_loaded);
    setPlaceholderText(m_loaded ? QString() : u"참고사항을 읽지 못했습니다.!!"_s);
    // A style sheet looks at the property only when it is polished anew.
    style()->unpolish(this);
    style()->polish(this);
}
