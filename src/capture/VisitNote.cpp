#include "capture/VisitNote.h"

#include "contracts/desktop.h"
#include "frame/components.h"
#include "records/capture_index.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

using namespace Qt::StringLiterals;

namespace {

const QString NoteKey = u"note"_s;

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
    m_aside = Aside{m_box.Of(), m_box.Text(), m_box.IsTouched(), m_box.IsLoaded()};
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
        m_box.RestoreNote(aside.visit, aside.text, aside.touched);
        return;
    }
    m_box.BeginLoading(aside.visit);
    m_box.FailLoading();
}

bool VisitNote::IsInBox(const Visit& visit) const
{
    return !m_aside && m_box.Of() == visit;
}

std::optional<QString> VisitNote::TypedNote(const Visit& visit) const
{
    if (m_aside && m_aside->visit == visit && m_aside->loaded && m_aside->touched)
        return m_aside->text;
    const bool isTyped = IsInBox(visit) && m_box.IsLoaded() && m_box.IsTouched();
    return isTyped ? std::optional(m_box.Text()) : std::nullopt;
}

QString VisitNote::NoteToStore(const Visit& visit)
{
    if (const std::optional<QString> typed = TypedNote(visit))
        return *typed;
    QString stored = StoredNote(visit);
    ShowUntouched(visit, stored);
    return stored;
}

void VisitNote::ShowStored(const Visit& visit, const StillFiling::Note& note)
{
    if (note.typed)
        CheckStored(visit, note.text, note.stored);
    else
        ShowUntouched(visit, note.text);
}

void VisitNote::ShowUntouched(const Visit& visit, const QString& stored)
{
    // A box whose note is on its way gets it from there, and one that has been typed into since keeps that.
    if (IsInBox(visit) && !m_box.IsAwaited() && !m_box.IsTouched() && (!m_box.IsLoaded() || m_box.Text() != stored))
        m_box.SetLoadedNote(stored);
}

VisitNote::Kept VisitNote::CheckStored(const Visit& visit, const QString& text, const QString& stored)
{
    // Characters, as the column counts them: one that it can't hold has become another, which is no loss of length.
    const auto characters = [](const QString& counted) { return static_cast<int>(counted.toUcs4().size()); };
    const Kept kept{!stored.isNull(), characters(Trim(NoteForStore(text))), characters(stored)};
    if (kept.IsWhole() && IsInBox(visit) && m_box.Text() == text && !m_box.IsComposing())
        m_box.MarkUntouched();
    return kept;
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
    const std::optional<QString> typed = TypedNote(visit);
    if (!typed || Trim(*typed).isEmpty() || Trim(visit.chart).isEmpty())
        return std::nullopt;
    return TextDraft::Draft{
        DraftName(visit),
        {{u"chart"_s, visit.chart}, {u"date"_s, visit.ymd}, {u"section"_s, visit.etc}, {NoteKey, *typed}}};
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
    m_box.RestoreNote(visit, text, true);
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
