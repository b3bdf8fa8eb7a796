#pragma once

#include "capture/RoomWatch.h"
#include "filing/Leftovers.h"
#include "filing/StillFiling.h"

#include <QImage>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

class ImagXpress;
class PictureBatch;
class VideoCap;
class VisitNote;
class VisitPictures;

/// Takes stills of the current visit, stores its note, and shows its pictures. A still's file is written at the press,
/// whatever box is open, whatever grid is being filled and whatever the database does; its rows follow, and its
/// thumbnail behind them.
class StillCapture : public QObject
{
    Q_OBJECT

public:
    StillCapture(VisitPictures& pictures, VisitNote& note);
    ~StillCapture() override;

    /// A visit takes 50 stills: ten rows of five.
    static constexpr int MostPictures = 50;

    /// Called when the file stands, or with the fault that kept it from that.
    using Filed = std::function<void(std::exception_ptr fault)>;

    /// Takes the frame of this moment and files it. Refused with a message without a chart or a live picture, in
    /// silence when the visit's grid is full: throws PlatformError with what the operator is to be told, and `filed`
    /// isn't called.
    void SetCaptureValues(VideoCap& capture, const Filed& filed, PictureOrigin origin = PictureOrigin::Press);
    /// Files the picture that the control holds like a still, with the same refusals.
    void FilePicture(const ImagXpress& picture);
    /// Stores the note and sets the visit's capture mark, with a message, and shows the stored state again.
    void SaveVisitNote();

    /// Fills the visit's grid with the pictures of a visit, serving events; pictures whose rows wait stand behind the
    /// others, marked. A visit that can't be read leaves the pictures of the visit that was shown, or an empty grid
    /// when that was another one.
    void ShowPictures(const Visit& visit, bool keepCursor);
    /// The visit's pictures are gone.
    void ShowNone();

    /// The visit's pictures, those on their way included.
    int Taken() const;
    /// The grid has been changed by another hand.
    void TellTaken() { Q_EMIT TakenChanged(Taken()); }

    /// Makes them when the share answers, before it takes a picture.
    void MakeFoldersLater(const QStringList& folders) { m_filing.MakeFoldersLater(folders); }
    /// Brings to their end the stills that dead stations of this machine were filing, in these sections of the year;
    /// the operator is told how many.
    void SettleLeftovers(const QStringList& sections);

    /// Ends what waits for fills, and waits a little for what is being filed: the screen closes. Tells
    /// the operator when rows have to wait for the next run.
    void Finish();

    const PictureJournal& Journal() const { return m_filing.Journal(); }
    StillFiling& Filing() { return m_filing; }
    /// Numbers of a visit's rows as they were read last, if that was for the grid; else none.
    QList<int> KnownNumbers(const Visit& visit) const { return m_read.first == visit ? m_read.second : QList<int>(); }
    bool IsDatabaseAway() const { return m_filing.IsDatabaseAway(); }
    bool IsShareAway() const { return m_filing.Pictures().IsShareAway(); }
    /// No picture is on its way any more, but for those whose rows the database refuses or doesn't answer for, and
    /// those whose place on the screen is being filled.
    bool IsAtRest() const;
    /// A picture of the journal has been deleted.
    void Forget(const QString& id);

Q_SIGNALS:
    /// How many pictures the visit has.
    void TakenChanged(int pictures);
    /// What the operator is to know of the room for pictures: empty while there is enough.
    void RoomChanged(const QString& text);
    /// What the operator is to know of the database: empty while it answers.
    void OutageChanged(const QString& text);
    /// The same of the share.
    void ShareOutageChanged(const QString& text);
    /// Share and database answer again, and the visit's stored pictures could not be shown before.
    void CanBeShown();
    /// A still's file and rows are safe.
    void StillIsSafe(const Visit& visit, int number);
    /// The operator has stored the visit.
    void VisitIsStored(const Visit& visit);

private:
    /// A still from the press to its thumbnail.
    struct Still
    {
        Visit visit;
        PictureOrigin origin = PictureOrigin::Press;
        QString id = {};
        int number = 0; ///< 0 until the file stands.
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
    StillPointer OnRoad(const QString& id) const;
    void ShowPending(const Visit& visit);
    /// Those that wait for the share stand behind the others, without a number.
    void ShowUnnumbered(const Visit& visit);
    void ShowMoved(const QString& id);
    /// Places a picture that is neither shown nor on its way.
    void ShowFiled(const QString& id, const Visit& visit, int number);
    void Place(const QString& id, int number, const QImage& thumbnail);
    QString MarkOf(const QString& id) const;
    void ShowSafe(const StillFiling::SafePicture& picture);
    void ShowWaiting(const QString& id);
    /// A picture whose rows are in, or have to wait.
    void ShowNumbered(const QString& id, const Visit& visit, int number);
    void ShowOutage();
    /// Whether share and database answer again.
    void AskAgain();
    void ShowSaved(const Visit& visit, const QString& message);
    void TellSettled(const Leftovers::Settled& settled);

    VisitPictures& m_pictures;
    VisitNote& m_note;
    StillFiling m_filing;
    Leftovers m_leftovers{m_filing};
    RoomWatch m_room{m_filing.Pictures()};
    QList<StillPointer> m_road;               ///< In the order of the presses.
    QList<std::pair<QString, int>> m_arrived; ///< Pictures whose rows came in since its last fill was begun.
    std::pair<Visit, QList<int>> m_read;      ///< Numbers of the rows that the last fill was made from.
    bool m_lacksStored = false;               ///< The last fill got no answer.
    QTimer m_askAgain;
    bool m_finished = false;
};
