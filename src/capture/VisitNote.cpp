#include "capture/VisitNote.h"

#include "records/capture_index.h"
#include "screenparts/fill_routines.h"
#include "screenparts/NoteBox.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

void VisitNote::LoadForVisit()
{
    m_aside.reset();
    m_box.setHistoryNote(false);
    LoadCaptureNote(CurrentVisit(), m_box);
}

void VisitNote::AwaitVisit()
{
    m_aside.reset();
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
