#pragma once

#include "screenparts/LongTextBox.h"
#include "visit/Visit.h"

class QLabel;

/// A text box that shows the note of one visit and section, and knows whose note it is and whether it may stand in the
/// place of the stored one.
class NoteBox : public LongTextBox
{
    Q_OBJECT
    /// What the look shows: the note of a history line, which can't be edited here.
    Q_PROPERTY(bool historyNote READ IsHistoryNote)

public:
    explicit NoteBox(QWidget* parent = nullptr);

    /// Whose note it is.
    const Visit& Of() const { return m_visit; }

    /// False from the moment that a note is asked for until it has been read: nothing of it may then be written.
    bool IsLoaded() const { return m_state == State::Loaded; }
    /// The stored note has been asked for and may still come.
    bool IsAwaited() const { return m_state == State::Awaited; }
    bool IsHistoryNote() const { return m_historyNote; }

    /// Empties the box for the note of that visit, which is about to be read.
    void BeginLoading(const Visit& visit);
    /// The stored note, as `RawNote` gives it. The box can be edited from here on, unless it shows a history line.
    void SetLoadedNote(const QString& raw);
    /// The stored note that the text was begun from.
    const QString& Base() const { return m_base; }
    /// The text stays, and is compared with that one from here on.
    void setBase(const QString& raw) { m_base = raw; }
    /// The note that was asked for can't be read.
    void FailLoading();
    /// What the box holds is what is stored.
    void MarkUntouched() { document()->setModified(false); }
    /// What the box holds is stored nowhere.
    void MarkTouched() { document()->setModified(true); }
    /// Back to an own text kept aside earlier, as `Text` gave it, begun from `base`.
    void RestoreNote(const Visit& visit, const QString& text, const QString& base, bool touched);
    void setHistoryNote(bool on);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    enum class State { Awaited, Failed, Loaded };

    void ShowState();
    /// Lines that can't be seen have a mark that tells how many there are, and the whole note when it is pointed at.
    void ShowFurtherLines();

    Visit m_visit;
    State m_state = State::Awaited;
    bool m_historyNote = false;
    QString m_base;
    QLabel* m_further;
};
