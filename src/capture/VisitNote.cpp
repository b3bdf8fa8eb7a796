#include "capture/VisitNote.h"

#include "capture/capture_rows.h"
#include "launch/context/VisitContext.h"
#include "records/capture_index.h"
#include "records/NoteBox.h"
#include "records/text/text_routines.h"

void VisitNote::LoadForVisit()
{
    m_aside.reset();
    m_box.setHistoryNote(false);
    LoadCaptureNote(VisitContext.Chart, VisitContext.Yuhyung, VisitContext.Ymd, VisitContext.CaptureDir,
                    VisitContext.Etc, m_box);
}

void VisitNote::AwaitVisit()
{
    m_aside.reset();
    m_box.setHistoryNote(false);
    m_box.BeginLoading(VisitContext.Ymd, VisitContext.Etc);
}

void VisitNote::FailVisit()
{
    if (m_box.Shows(VisitContext.Ymd, VisitContext.Etc) && m_box.IsAwaited())
        m_box.FailLoading();
}

void VisitNote::ShowHistoryNote(const QString& ymd, const QString& etc, const QString& yearFolder)
{
    BringBack();
    if (m_box.Shows(ymd, etc))
        return;
    m_aside = Aside{m_box.Ymd(), m_box.Section(), m_box.Text(), m_box.IsTouched(), m_box.IsLoaded()};
    m_box.setHistoryNote(true);
    LoadCaptureNote(VisitContext.Chart, VisitContext.Yuhyung, ymd, yearFolder, etc, m_box);
}

void VisitNote::BringBack()
{
    if (!m_aside)
        return;
    const Aside aside = *m_aside;
    m_aside.reset();
    m_box.setHistoryNote(false);
    if (aside.loaded) {
        m_box.RestoreNote(aside.ymd, aside.etc, aside.text, aside.touched);
        return;
    }
    m_box.BeginLoading(aside.ymd, aside.etc);
    m_box.FailLoading();
}

bool VisitNote::IsInBox(const CaptureVisit& visit) const
{
    return visit.chart == VisitContext.Chart && !m_aside && m_box.Shows(visit.ymd, visit.etc);
}

StillFiling::Note VisitNote::NoteToStore(const CaptureVisit& visit, bool mayAsk)
{
    const bool own = IsInBox(visit);
    if (own && m_box.IsLoaded() && m_box.IsTouched())
        return {m_box.Text(), true};
    if (!mayAsk)
        return {};
    const QString stored = StoredNote(visit.chart, visit.ymd, visit.etc);
    // A box whose note is on its way gets it from there.
    if (own && !m_box.IsAwaited() && (!m_box.IsLoaded() || m_box.Text() != stored))
        m_box.SetLoadedNote(stored);
    return {stored, false};
}

VisitNote::Kept VisitNote::CheckStored(const CaptureVisit& visit, const QString& text)
{
    const QString stored = StoredNote(visit.chart, visit.ymd, visit.etc);
    // Characters, as the column counts them: one that it can't hold has become another, which is no loss of length.
    const auto characters = [](const QString& counted) { return static_cast<int>(counted.toUcs4().size()); };
    const Kept kept{!stored.isNull(), characters(Trim(NoteForStore(text))), characters(stored)};
    if (kept.IsWhole() && IsInBox(visit) && m_box.Text() == text && !m_box.IsComposing())
        m_box.MarkUntouched();
    return kept;
}

void VisitNote::RowIsGone(const CaptureVisit& visit)
{
    if (m_aside && m_aside->loaded && visit.chart == VisitContext.Chart && m_aside->ymd == visit.ymd &&
        m_aside->etc == visit.etc)
        m_aside->touched = true;
    if (IsInBox(visit) && m_box.IsLoaded())
        m_box.MarkTouched();
}
