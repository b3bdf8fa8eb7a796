#include "capture/VisitNote.h"

#include "contracts/desktop.h"
#include "frame/components.h"
#include "records/capture_index.h"
#include "records/visit_note.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString NoteKey = u"note"_s;
/// What it was begun from.
const QString BaseKey = u"storedNote"_s;

QString DraftName(const Visit& visit)
{
    return TextDraft::NameOf({NoteKey, visit.chart, visit.ymd, visit.etc});
}

} // namespace

void VisitNote::LoadForVisit()
{
    m_aside.reset();
    m_box.setHistoryNote(false);
    LoadCaptureNote(CurrentVisit(), m_box);
    LookForDraft();
}

void VisitNote::AwaitVisit()
{
    m_aside.reset();
    setOffered(std::nullopt);
    m_box.setHistoryNote(false);
    m_box.BeginLoading(CurrentVisit());
}

void VisitNote::FailVisit()
{
    if (m_box.Of() == CurrentVisit() && m_box.IsAwaited())
        m_box.FailLoading();
}

void VisitNote::ShowHistoryNote(const Visit& visit)
{
    BringBack();
    if (m_box.Of() == visit)
        return;
    m_aside = Aside{m_box.Of(), m_box.Text(), m_box.Base(), m_box.IsTouched(), m_box.IsLoaded()};
    m_box.setHistoryNote(true);
    LoadCaptureNote(visit, m_box);
}

void VisitNote::BringBack()
{
    if (!m_aside)
        return;
    const Aside aside = *m_aside;
    m_aside.reset();
    m_box.setHistoryNote(false);
    if (aside.loaded) {
        m_box.RestoreNote(aside.visit, aside.text, aside.base, aside.touched);
        return;
    }
    m_box.BeginLoading(aside.visit);
    m_box.FailLoading();
}

bool VisitNote::IsInBox(const Visit& visit) const
{
    return !m_aside && m_box.Of() == visit;
}

std::optional<TypedNote> VisitNote::Typed(const Visit& visit) const
{
    if (m_aside && m_aside->visit == visit && m_aside->loaded && m_aside->touched)
        return TypedNote{m_aside->text, m_aside->base};
    const bool isTyped = IsInBox(visit) && m_box.IsLoaded() && m_box.IsTouched();
    return isTyped ? std::optional(TypedNote{m_box.Text(), m_box.Base()}) : std::nullopt;
}

void VisitNote::ShowPresent(const Visit& visit)
{
    ShowUntouched(visit, RawNote(visit));
}

QString VisitNote::ShowStored(const Visit& visit, const StillFiling::Note& note)
{
    if (note.typed)
        return ShowTyped(visit, *note.typed, note.stored, false);
    ShowUntouched(visit, note.stored.raw);
    return {};
}

void VisitNote::ShowUntouched(const Visit& visit, const QString& raw)
{
    // A box whose note is on its way gets it from there, and one that has been typed into since keeps that.
    if (IsInBox(visit) && !m_box.IsAwaited() && !m_box.IsTouched() && (!m_box.IsLoaded() || m_box.Base() != raw))
        m_box.SetLoadedNote(raw);
}

void VisitNote::Replace(const Visit& visit, const QString& text, const QString& base, bool touched)
{
    if (m_aside && m_aside->visit == visit && m_aside->loaded)
        *m_aside = Aside{visit, text, base, touched, true};
    else if (IsInBox(visit) && m_box.IsLoaded())
        m_box.RestoreNote(visit, text, base, touched);
}

QString VisitNote::ShowTyped(const Visit& visit, const QString& text, const NoteStored& stored, bool tellsCut)
{
    const std::optional<TypedNote> present = Typed(visit);
    const bool isSame = present && present->text == text;
    const auto characters = [](const QString& counted) { return static_cast<int>(Trim(counted).toUcs4().size()); };
    const int wanted = characters(NoteForStore(text));
    const int kept = characters(stored.raw);
    switch (stored.outcome) {
    case NoteStored::NoRow:
        // A visit without a picture has no row: its note waits in the box for the first one.
        return {};
    case NoteStored::Stored:
        if (IsInBox(visit))
            m_box.setBase(stored.raw);
        else if (m_aside && m_aside->visit == visit)
            m_aside->base = stored.raw;
        if (kept < wanted)
            return tellsCut ? u"참고사항이 길어 %1자 중 %2자만 저장되었습니다.!!"_s.arg(wanted).arg(kept) : QString();
        // Another station's holds it already.
        if (isSame && !MayBeStoredAs(Trim(stored.raw), Trim(NoteForStore(text))))
            Replace(visit, Trim(stored.raw), stored.raw, false);
        else if (isSame && m_aside)
            m_aside->touched = false;
        else if (isSame && !m_box.IsComposing())
            m_box.MarkUntouched();
        return {};
    case NoteStored::Joined:
        if (isSame || !present)
            Replace(visit, Trim(stored.raw), stored.raw, false);
        else // He has typed on: theirs goes in front of that.
            Replace(visit, stored.theirs + u'\n' + present->text, stored.raw, true);
        return u"다른 곳에서 참고사항을 고쳤습니다.!! 쓴 글을 그 뒤에 붙여 함께 저장하였습니다.!!"_s;
    case NoteStored::NoRoom:
        if (std::exchange(m_toldOf, stored.raw) == stored.raw)
            return {};
        return u"다른 곳에서 참고사항을 고쳤습니다.!! 함께 저장할 자리가 없어 그쪽 글이 남았고, 쓴 글은 화면에 있습니다.!!"_s;
    }
    return {};
}

void VisitNote::RowIsGone(const Visit& visit)
{
    if (m_aside && m_aside->loaded && m_aside->visit == visit)
        m_aside->touched = true;
    if (IsInBox(visit) && m_box.IsLoaded())
        m_box.MarkTouched();
}

std::optional<TextDraft::Draft> VisitNote::UnsavedDraft() const
{
    const Visit visit = CurrentVisit();
    const std::optional<TypedNote> typed = Typed(visit);
    if (!typed || Trim(typed->text).isEmpty() || Trim(visit.chart).isEmpty())
        return std::nullopt;
    return TextDraft::Draft{DraftName(visit),
                            {{u"chart"_s, visit.chart},
                             {u"date"_s, visit.ymd},
                             {u"section"_s, visit.etc},
                             {NoteKey, typed->text},
                             {BaseKey, typed->base}}};
}

void VisitNote::LookForDraft()
{
    const Visit visit = CurrentVisit();
    const QString name = DraftName(visit);
    const std::optional<QJsonObject> found = TextDraft::Find(name);
    if (!found || !IsInBox(visit))
        return;
    // Compared as it would have been stored.
    if (Trim(NoteForStore(found->value(NoteKey).toString())) == Trim(m_box.Text()))
        TextDraft::Remove(name);
    else
        setOffered(TextDraft::Draft{name, *found});
}

void VisitNote::setOffered(const std::optional<TextDraft::Draft>& draft)
{
    m_offered = draft;
    m_draftIsThere(draft.has_value());
}

void VisitNote::TakeUpDraft()
{
    BringBack();
    const Visit visit = CurrentVisit();
    if (!m_offered || !IsInBox(visit) || !m_box.IsLoaded())
        return;
    QString text = m_offered->content.value(NoteKey).toString();
    if (m_box.IsTouched())
        text += u'\n' + m_box.Text();
    m_box.RestoreNote(visit, text, m_offered->content.value(BaseKey).toString(), true);
    m_draft.TakeUp(*m_offered);
    setOffered(std::nullopt);
    m_draft.Check();
}

void VisitNote::End()
{
    m_draft.End();
    if (m_offered && !UseService<Desktop>().EndIsRequested())
        TextDraft::Remove(m_offered->name);
}
