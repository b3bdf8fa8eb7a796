#include "capture/VisitNote.h"

#include "launch/context/VisitContext.h"
#include "records/capture_index.h"
#include "records/NoteBox.h"

void VisitNote::LoadForVisit()
{
    m_kept.reset();
    m_box.setHistoryNote(false);
    LoadCaptureNote(VisitContext.Chart, VisitContext.Yuhyung, VisitContext.Ymd, VisitContext.CaptureDir,
                    VisitContext.Etc, m_box);
}

void VisitNote::AwaitVisit()
{
    m_kept.reset();
    m_box.setHistoryNote(false);
    m_box.BeginLoading(VisitContext.Ymd, VisitContext.Etc);
}

void VisitNote::ShowHistoryNote(const QString& ymd, const QString& etc, const QString& yearFolder)
{
    BringBack();
    if (m_box.Shows(ymd, etc))
        return;
    m_kept = Kept{m_box.Ymd(), m_box.Section(), m_box.toPlainText(), m_box.IsTouched(), m_box.IsLoaded()};
    m_box.setHistoryNote(true);
    LoadCaptureNote(VisitContext.Chart, VisitContext.Yuhyung, ymd, yearFolder, etc, m_box);
}

void VisitNote::BringBack()
{
    if (!m_kept)
        return;
    const Kept kept = *m_kept;
    m_kept.reset();
    m_box.setHistoryNote(false);
    if (kept.loaded)
        m_box.RestoreNote(kept.ymd, kept.etc, kept.text, kept.touched);
    else
        m_box.BeginLoading(kept.ymd, kept.etc);
}

StillFiling::Note VisitNote::NoteToStore(const CaptureVisit& visit)
{
    const bool own = visit.chart == VisitContext.Chart && !m_kept && m_box.Shows(visit.ymd, visit.etc);
    if (own && m_box.IsLoaded() && m_box.IsTouched())
        return {m_box.toPlainText(), true};
    const QString stored = StoredNote(visit.chart, visit.ymd, visit.etc);
    if (own && (!m_box.IsLoaded() || m_box.toPlainText() != stored))
        m_box.SetLoadedNote(stored);
    return {stored, false};
}

void VisitNote::MarkStored(const CaptureVisit& visit, const QString& text)
{
    const bool own = visit.chart == VisitContext.Chart && !m_kept && m_box.Shows(visit.ymd, visit.etc);
    if (own && m_box.toPlainText() == text)
        m_box.MarkUntouched();
}
