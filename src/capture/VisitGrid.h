#pragma once

#include "filing/StillFiling.h"

#include <QImage>
#include <QTimer>

class PictureBatch;
class VisitPictures;

/// Keeps the visit's grid in step with what is filed: its stored pictures, those on their way behind them, each still
/// as soon as it can be seen, whatever is being filled and whether the database answers or not.
class VisitGrid : public QObject
{
    Q_OBJECT

public:
    VisitGrid(VisitPictures& pictures, StillFiling& filing);
    ~VisitGrid() override;

    /// A visit takes 50 stills: ten rows of five.
    static constexpr int MostPictures = 50;

    /// Fills the grid with the pictures of a visit, serving events; pictures whose rows wait stand behind the others,
    /// marked. A visit that can't be read leaves the pictures of the visit that was shown, or an empty grid when that
    /// was another one.
    void ShowPictures(const Visit& visit, bool keepCursor);
    /// The visit's pictures are gone.
    void ShowNone();

    /// The visit's pictures, those on their way included.
    int Taken() const;
    /// The visit can take one more beside so many that are still to come.
    bool HasRoom(int awaited = 0) const;
    /// The grid has been changed by another hand.
    void TellTaken() { Q_EMIT TakenChanged(Taken()); }
    /// Numbers of a visit's rows as they were read last, if that was for the grid; else none.
    QList<int> KnownNumbers(const Visit& visit) const { return m_read.first == visit ? m_read.second : QList<int>(); }
    /// No still is on its way to the screen, but for those whose place is being filled.
    bool IsAtRest() const;

    /// A still from the press to its thumbnail.
    struct RoadStill
    {
        Visit visit;
        QString id = {};
        int number = 0; ///< 0 until the file stands.
        std::shared_ptr<PictureBatch> thumbnail = nullptr;
        bool mayShow = false; ///< The rows are in, or have to wait.
        bool isShown = false; ///< It is in the line for the screen.
    };
    using RoadPointer = std::shared_ptr<RoadStill>;

    /// It is being filed: the others of its visit stand before it.
    void Expect(const RoadPointer& still);
    void TakeContent(const RoadPointer& still, const QByteArray& content);
    /// Its file is safe, under that number or, with 0, on this machine alone.
    void TakeFiled(const RoadPointer& still, int number);
    /// It isn't filed, or it has been deleted.
    void Drop(const RoadPointer& still);
    void Forget(const QString& id);

    /// The screen closes: nothing is shown any more.
    void End();

Q_SIGNALS:
    /// A picture of that identity has been deleted before it had a number.
    void Forgotten(const QString& id);
    /// How many pictures the visit has.
    void TakenChanged(int pictures);
    /// A still of this run is there as a file's content; then it has its number, or 0 where it waits for that. `still`
    /// tells which one, and is never looked into.
    void StillIsEncoded(const void* still, const QByteArray& content);
    void StillIsFiled(const void* still, int number);
    /// Share and database answer again, and the visit's stored pictures could not be shown before.
    void CanBeShown();

private:
    int CountOnRoad(const Visit& visit) const;
    /// Those that can be shown, in the order of the presses.
    void ShowReady();
    void ShowStill(const RoadPointer& still);
    RoadPointer OnRoad(const QString& id) const;
    void ShowPending(const Visit& visit);
    /// Those that wait for the share stand behind the others, without a number.
    void ShowUnnumbered(const Visit& visit);
    void ShowMoved(const QString& id);
    void ShowSafe(const StillFiling::SafePicture& picture);
    void ShowWaiting(const QString& id);
    /// A picture whose rows are in, or have to wait.
    void ShowNumbered(const QString& id, const Visit& visit, int number);
    /// Places a picture that is neither shown nor on its way.
    void ShowFiled(const QString& id, const Visit& visit, int number);
    void Place(const QString& id, int number, const QImage& thumbnail);
    QString MarkOf(const QString& id) const;
    /// Whether share and database answer again.
    void AskAgain();

    VisitPictures& m_pictures;
    StillFiling& m_filing;
    QList<RoadPointer> m_road;                ///< In the order of the presses.
    QList<std::pair<QString, int>> m_arrived; ///< Pictures whose rows came in since its last fill was begun.
    std::pair<Visit, QList<int>> m_read;      ///< Numbers of the rows that the last fill was made from.
    bool m_lacksStored = false;               ///< The last fill got no answer.
    bool m_hasEnded = false;
    QTimer m_askAgain;
};
