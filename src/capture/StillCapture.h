#pragma once

#include "capture/FillLine.h"
#include "capture/RoomWatch.h"
#include "filing/Leftovers.h"
#include "filing/StillFiling.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QPoint>

#include <memory>
#include <optional>

class fpSpread;
class ImagXpress;
class PictureBatch;
class VideoCap;
class VisitNote;

/// Takes stills of the current visit, stores its note, and shows its pictures. A still's file is written at the press,
/// whatever box is open, whatever grid is being filled and whatever the database does; its rows follow, and its
/// thumbnail behind them.
class StillCapture : public QObject
{
    Q_OBJECT

public:
    StillCapture(fpSpread& visitGrid, VisitNote& note);
    ~StillCapture() override;

    /// A visit takes 50 stills: ten rows of five.
    static constexpr int MostPictures = 50;

    /// Called when the file stands, or with the fault that kept it from that.
    using Filed = std::function<void(std::exception_ptr fault)>;

    /// Takes the frame of this moment and files it. Refused with a message without a chart or a live picture, in
    /// silence when the visit's grid is full: throws PlatformError with what the operator is to be told, and `filed`
    /// isn't called.
    void SetCaptureValues(VideoCap& capture, const Filed& filed);
    /// Files the picture that the control holds like a still, with the same refusals.
    void FilePicture(const ImagXpress& picture);
    /// Stores the note and sets the visit's capture mark, with a message, and shows the stored state again.
    void SaveVisitNote();

    /// Fills the visit's grid with the pictures of a visit, serving events; pictures whose rows wait stand behind the
    /// others, marked. A visit that can't be read leaves the pictures of the visit that was shown, or an empty grid
    /// when that was another one.
    void ShowPictures(const Visit& visit, bool keepCursor);
    /// Another one than the visit's own pictures is shown from here on, or none.
    void ForgetShown();

    /// The visit's pictures, those on their way included.
    int Taken() const;
    /// The grid has been changed by another hand.
    void TellTaken() { Q_EMIT TakenChanged(Taken()); }

    /// Where the screen's changes wait while it is being filled.
    FillLine& Line() { return m_line; }

    /// Makes them when the share answers, before it takes a picture.
    void MakeFoldersLater(const QStringList& folders) { m_filing.MakeFoldersLater(folders); }
    /// Brings to their end the stills that dead stations of this machine were filing; the operator is told how many.
    void SettleLeftovers() { m_leftovers.Settle(); }

    /// Works the line off now, fill or no fill, and waits a little for what is being filed: the screen closes. Tells
    /// the operator when rows have to wait for the next run.
    void Finish();

    const PendingRows& Pending() const { return m_filing.Pending(); }
    bool IsDatabaseAway() const { return m_filing.IsDatabaseAway(); }
    bool IsShareAway() const { return m_filing.Pictures().IsShareAway(); }
    /// No picture is on its way any more, but for those whose rows the database refuses or doesn't answer for, and
    /// those whose place on the screen is being filled.
    bool IsAtRest() const;
    /// A picture whose rows wait, or that lies in the spool, has been deleted.
    void Forget(const Visit& visit, int number);

    /// Number in the spool of the picture that stands in a place of the grid without one; 0 when none does.
    int WithoutNumberAt(QPoint place) const;
    /// The number of a picture that had that one in the spool, once it has been filed; any other number as it is.
    int NumberNow(int number) const { return m_moved.value(number, number); }
    /// Column and row of a picture's cell, also of one in the spool.
    std::optional<QPoint> PlaceOf(int number) const;

Q_SIGNALS:
    /// How many pictures the visit has.
    void TakenChanged(int pictures);
    /// What the operator is to know of the room for pictures: empty while there is enough.
    void RoomChanged(const QString& text);
    /// What the operator is to know of the database: empty while it answers.
    void OutageChanged(const QString& text);
    /// The same of the share.
    void ShareOutageChanged(const QString& text);
    /// A still's file and rows are safe.
    void StillIsSafe(const Visit& visit, int number);
    /// The operator has stored the visit.
    void VisitIsStored(const Visit& visit);

private:
    /// A still from the press to its thumbnail.
    struct Still
    {
        Visit visit;
        int number = 0; ///< 0 until the file stands; below 0 in the spool.
        std::shared_ptr<PictureBatch> thumbnail = nullptr;
        bool isHeard = false; ///< Its shutter makes a sound.
        bool mayShow = false; ///< The rows are in, or have to wait.
        bool isShown = false; ///< It is in the line for the screen.
    };
    using StillPointer = std::shared_ptr<Still>;

    bool HasChart() const;
    bool HasRoom() const;
    int CountOnRoad(const Visit& visit) const;
    void FileStill(const StillPointer& still, const std::function<QByteArray()>& encode, const Filed& filed);
    /// The sound of a still, once.
    void Sound(const StillPointer& still, bool isSafe);
    /// Those that can be shown, in the order of the presses.
    void ShowReady();
    void ShowStill(const StillPointer& still);
    StillPointer OnRoad(const Visit& visit, int number) const;
    void ShowPending(const Visit& visit);
    /// Those in the spool stand behind the others, without a number.
    void ShowSpooled(const Visit& visit);
    void ShowMoved(const Visit& visit, int spooled, int number);
    /// Places a picture that is neither shown nor on its way.
    void ShowFiled(const Visit& visit, int number);
    /// Gives the column and row of its cell.
    QPoint PlaceThumbnail(const Visit& visit, int number, const QImage& thumbnail);
    void MarkWaiting(const Visit& visit, int number);
    void ShowSafe(const StillFiling::SafePicture& picture);
    void ShowWaiting(const Visit& visit, int number);
    void ShowOutage();
    void ShowSaved(const Visit& visit, const QString& message);
    void TellSettled(const Leftovers::Settled& settled);

    fpSpread& m_grid;
    VisitNote& m_note;
    StillFiling m_filing;
    Leftovers m_leftovers{m_filing};
    RoomWatch m_room{m_filing.Pictures()};
    FillLine m_line;
    QList<StillPointer> m_road;   ///< In the order of the presses.
    std::optional<Visit> m_shown; ///< Whose pictures the grid shows.
    QList<int> m_arrived;         ///< Numbers whose rows came in since its last fill was begun.
    QList<int> m_read;            ///< Numbers of the rows that its last fill was made from.
    QList<int> m_unnumbered;      ///< Numbers in the spool of its cells without one, in reading order.
    QHash<int, QImage> m_spooled; ///< Thumbnails of pictures in the spool.
    QHash<int, int> m_moved;      ///< What became of numbers in the spool.
    bool m_finished = false;
};
