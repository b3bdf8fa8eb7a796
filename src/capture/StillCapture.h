#pragma once

#include "capture/FillLine.h"
#include "capture/LeftoverNumbers.h"
#include "capture/StillFiling.h"

#include <QObject>
#include <QPoint>

#include <memory>

class fpSpread;
class ImagXpress;
class PictureBatch;
class VideoCap;
class VisitNote;

/// Takes stills of the current visit, stores its note, and shows its pictures. A still's file and rows are written at
/// the press, whatever box is open and whatever grid is being filled; what it changes on the screen waits in line until
/// the fill is through.
class StillCapture : public QObject
{
    Q_OBJECT

public:
    StillCapture(fpSpread& visitGrid, VisitNote& note);
    ~StillCapture() override;

    /// Takes a still and files it. Refused with a message without a chart or a live picture, in silence when the
    /// visit's grid is full. Throws PlatformError with what the operator is to be told.
    void SetCaptureValues(VideoCap& capture);
    /// Files the picture that the control holds like a still, with the same refusals.
    void FilePicture(const ImagXpress& picture);
    /// Stores the note and sets the visit's capture mark, with a message, and shows the stored state again.
    void SaveVisitNote();

    /// Fills the visit's grid with the pictures of a visit, serving events; pictures whose rows wait stand behind the
    /// others, marked.
    void ShowPictures(const Visit& visit, bool keepCursor);

    /// Where the screen's changes wait while it is being filled.
    FillLine& Line() { return m_line; }

    /// Brings to their end the stills that dead stations of this machine were filing: in the sections of the visit's
    /// year, and wherever their lists say. The operator is told once how many came back.
    void SettleLeftovers();

    /// Works the line off now, fill or no fill, and writes the rows that wait: the screen closes. Tells the operator
    /// when rows have to wait for the next run.
    void Finish();

    const PendingRows& Pending() { return m_filing.Pending(); }
    /// A picture whose rows wait has been deleted.
    void Forget(const Visit& visit, int number) { m_filing.Forget(visit, number); }

private:
    bool HasChart() const;
    bool HasRoom();
    void FileStill(const Visit& visit, const QByteArray& picture);
    void ShowStill(const Visit& visit, int number, const std::shared_ptr<PictureBatch>& thumbnail);
    void ShowPending(const Visit& visit);
    /// Gives the column and row of its cell.
    QPoint PlaceThumbnail(const Visit& visit, int number, const QImage& thumbnail);
    void ShowSafe(const StillFiling::Safe& picture);
    void ShowSaved(const Visit& visit, const QString& message);
    void Settle(const QList<LeftoverNumber>& numbers);
    int WriteLeftoverRows(const QList<LeftoverNumber>& numbers);

    fpSpread& m_grid;
    VisitNote& m_note;
    StillFiling m_filing;
    LeftoverNumbers m_leftovers;
    FillLine m_line;
    bool m_finished = false;
};
