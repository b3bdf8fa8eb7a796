#pragma once

#include "frame/WorkThread.h"
#include "visit/Visit.h"

#include <QDateTime>
#include <QImage>
#include <QList>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

class FrameMoments;

/// The live picture around each still of this screen, kept in memory until the screen closes: a foot is half a second
/// late. Of all the stills no more than `MostBytes` are kept, those of the oldest go first.
///
/// The sharpest moment of a still is the one whose luma has the largest variance of its Laplacian, that is, the most
/// contrast between neighbouring pixels; measured at half the picture's size or less, where the noise of the camera
/// counts little.
class Moments : public QObject
{
    Q_OBJECT

public:
    /// With what the live picture itself keeps, 256 MB.
    static constexpr qint64 MostBytes = 160'000'000;

    /// A picture to be filed beside the still that it is a moment of.
    struct Filing
    {
        Visit visit;
        QByteArray content; ///< A JPEG file.
        QDateTime takenAt;
        QString detail; ///< For the record of the act.
        /// Hears whether it is filed.
        std::function<void(bool isFiled)> answered;
    };
    using File = std::function<void(const Filing&)>;

    explicit Moments(File file);
    ~Moments() override;

    /// Those of a still that has just been taken.
    void Keep(const QString& id, const Visit& visit, const std::shared_ptr<const FrameMoments>& frames);
    /// The still stands under that number.
    void setNumber(const QString& id, int number);
    /// The still has been deleted, or wasn't filed.
    void Forget(const QString& id);
    void ForgetNumbers(const Visit& visit, const QList<int>& numbers);
    /// The screen closes.
    void End();

    /// Identity of the still whose moments are kept, by that or, when it is empty, by its number; empty without any.
    QString Find(const Visit& visit, int number, const QString& id = {}) const;
    /// Whether the number still stands for that still, and not for another station's: asks the database, and forgets
    /// the moments when it doesn't. One that can't tell counts as yes.
    void Confirm(const QString& id, const std::function<void(bool isThere)>& answer);

    struct Picture
    {
        int offsetMs = 0; ///< To the press, negative before it.
        QImage small;     ///< Fits into `SmallSize`.
        bool isSharpest = false;
        bool isFiled = false; ///< Or on its way.
    };
    static constexpr QSize SmallSize{96, 72};
    /// Oldest first; empty while they are being made.
    QList<Picture> PicturesAround(const QString& id) const;
    bool IsReady(const QString& id) const;
    /// The full picture, later; null when it has gone or can't be read.
    void Load(const QString& id, int at, const std::function<void(const QImage&)>& loaded);
    /// Files the moment as a still of its own; in silence when it has been filed.
    void FileMoment(const QString& id, int at);

    /// What is held in memory.
    qint64 Bytes() const;

Q_SIGNALS:
    /// The moments of that still are others, or have gone.
    void Changed(const QString& id);

private:
    struct Kept;
    struct Made;
    using KeptPointer = std::shared_ptr<Kept>;

    KeptPointer At(const QString& id) const;
    void MakeReady();
    void Take(const QString& id, const Made& made);
    void DropOldest();

    const File m_file;
    QList<KeptPointer> m_kept; ///< In the order of the presses.
    QTimer m_look;             ///< For those whose last frames are still to come.
    WorkThread m_worker;
};
