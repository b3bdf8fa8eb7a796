#pragma once

#include "capture/Moments.h"
#include "capture/VisitGrid.h"
#include "filing/Leftovers.h"

#include <QPointer>
#include <QSet>
#include <QTimer>

class AwaitedFrame;
class ImagXpress;
class StillFrame;
class VideoCap;
class VisitNote;

/// Takes stills of the current visit and stores its note. A still's file is written at the press, whatever box is open,
/// whatever grid is being filled and whatever the database does; its rows follow, and its thumbnail behind them.
class StillCapture : public QObject
{
    Q_OBJECT

public:
    StillCapture(VisitGrid& grid, StillFiling& filing, VisitNote& note);
    ~StillCapture() override;

    /// Called when the file stands, or with the fault that kept it from that.
    using Filed = std::function<void(std::exception_ptr fault)>;

    /// Takes the frame of this moment and files it. A live picture that has none yet, or none that is new enough, gives
    /// the first one that comes within a second, and else nothing: `filed` hears of neither then but that it is over.
    /// Refused with a message without a chart or a live picture, in silence when the visit's grid is full: throws
    /// PlatformError with what the operator is to be told, and `filed` isn't called.
    void SetCaptureValues(VideoCap& capture, const Filed& filed, PictureOrigin origin = PictureOrigin::Press);
    /// Files the picture that the control holds like a still, with the same refusals.
    void FilePicture(const ImagXpress& picture);
    /// A visit with a chart, with a message otherwise.
    bool HasChart() const;
    /// Files a picture of a command that goes on, in JPEG, in its turn behind the presses before it. Says nothing, and
    /// does nothing when the visit's grid is full: gives false then.
    bool FileContent(const Visit& visit, const QByteArray& content, const Filed& filed);
    /// The live picture around the stills of this screen.
    Moments& PressMoments() { return *m_moments; }
    /// Stores the note and sets the visit's capture mark, with a message, and shows the stored state again.
    void SaveVisitNote();

    /// Brings to their end the stills that dead stations of this machine were filing, in these sections of the year;
    /// the operator is told how many.
    void SettleLeftovers(const QStringList& sections);

    /// Ends what waits for fills, and waits a little for what is being filed: the screen closes. Tells the operator
    /// when rows have to wait for the next run.
    void Finish();

Q_SIGNALS:
    /// The operator has stored the visit.
    void VisitIsStored(const Visit& visit);
    /// A press has been answered: a picture is on its way, or none was taken.
    void Answered(bool taken);

private:
    /// A press whose frame is still to come.
    struct Press
    {
        QPointer<VideoCap> capture;
        Visit visit;
        PictureOrigin origin;
        Filed filed;
        std::shared_ptr<const AwaitedFrame> awaited;
    };

    /// Files a picture of this visit, as `picture` tells. Gives its identity.
    QString FileStill(StillFiles::Picture picture, bool isHeard, const Filed& filed);
    void TakeFrame(const Press& press, const std::shared_ptr<const StillFrame>& frame);
    void TakeAwaited();
    void FileMoment(const Moments::Filing& filing);
    void FileWhereRoom(const Moments::Filing& filing);
    /// The sound of a still, once.
    void Sound(const QString& id, bool isSafe);
    void TakeSafe(const StillFiling::SafePicture& picture);
    void ShowSaved(const Visit& visit, const QString& message);
    void TellSettled(const Leftovers::Settled& settled);

    VisitGrid& m_grid;
    StillFiling& m_filing;
    VisitNote& m_note;
    Leftovers m_leftovers{m_filing};
    const std::unique_ptr<Moments> m_moments;
    QList<Press> m_presses;  ///< In their order.
    QTimer m_look;           ///< For their frames.
    QSet<QString> m_unheard; ///< Stills whose shutter is still to make a sound.
    bool m_finished = false;
};
