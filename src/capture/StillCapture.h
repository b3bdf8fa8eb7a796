#pragma once

#include "capture/StillFiling.h"

#include <QObject>

#include <deque>
#include <functional>
#include <memory>

class fpSpread;
class ImagXpress;
class PictureBatch;
class QImage;
class VideoCap;
class VisitNote;

/// Takes stills of the current visit and stores its note. What is asked for while the screen is being filled waits in
/// line until the fill is through; a still's frame is taken at the press all the same.
class StillCapture : public QObject
{
    Q_OBJECT

public:
    StillCapture(fpSpread& visitGrid, VisitNote& note);
    ~StillCapture() override;

    /// Takes a still and files it. Refused with a message without a chart or a live picture, in silence when the
    /// visit's grid is full.
    void SetCaptureValues(VideoCap& capture);
    /// Files the picture that the control holds like a still, with the same refusals.
    void FilePicture(const ImagXpress& picture);
    /// Stores the note and sets the visit's capture mark, with a message, and shows the stored state again.
    void SaveVisitNote();

    /// While one of these lives, the screen is being filled and the line waits.
    class Hold
    {
    public:
        explicit Hold(StillCapture& line) : m_line(&line) { ++line.m_holds; }
        ~Hold() { m_line->Release(); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    private:
        StillCapture* m_line;
    };

    /// Works the line off now, fill or no fill, and writes the rows that wait: the screen closes. Tells the operator
    /// when rows have to wait for the next run.
    void Finish();

    const PendingRows& Pending() const { return m_filing.Pending(); }

private:
    void Release();
    void WorkOff();
    void InLine(const std::function<void()>& work);
    bool IsGridFull() const;
    bool HasChart() const;
    bool HasRoom() const;
    void FileStill(const CaptureVisit& visit, const std::function<QByteArray()>& encode);
    void StoreNote(const CaptureVisit& visit);
    void ShowSafe(const StillFiling::Safe& picture);

    fpSpread& m_grid;
    VisitNote& m_note;
    StillFiling m_filing;
    std::deque<std::function<void()>> m_line;
    std::unique_ptr<PictureBatch> m_thumbnail; ///< Of the still that is being filed, decoded meanwhile.
    int m_holds = 0;
    bool m_working = false;
};
