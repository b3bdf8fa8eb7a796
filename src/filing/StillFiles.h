#pragma once

#include "filing/CaptureNumbers.h"
#include "filing/DeletionJob.h"
#include "filing/PictureRecord.h"
#include "frame/WorkThread.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>

class PictureJournal;

/// Brings the files of stills into the capture directory, in the order of the presses, under numbers that no other
/// station takes. Each is written to this machine's disk as well, beside the share, and is safe as soon as one of the
/// two has it. A share that faults or stands still keeps no picture from safety: those that it hasn't taken wait on the
/// local disk, in order, until it answers.
///
/// The claim of a number names its picture and outlives the picture's local file, so that one that a dead station was
/// bringing to the share is found again and never filed twice.
class StillFiles : public QObject
{
    Q_OBJECT

public:
    /// A picture whose file is to be written.
    struct Picture
    {
        Visit visit;
        PictureOrigin origin = PictureOrigin::Press;
        /// Gives the content of the file. Runs on a thread of its own; may throw PlatformError.
        std::function<QByteArray()> encode;
        /// Hears the content before it is written.
        std::function<void(const QByteArray&)> encoded = {};
        /// It is safe: the file stands under its number, or, with 0, lies on the local disk and waits for the share. Or
        /// neither has taken it, and nothing is left behind.
        std::function<void(int number, std::exception_ptr fault)> filed = {};
        QDateTime takenAt = {}; ///< Null for now.
        QString detail = {};    ///< For the record of its filing.
    };
    /// The operator's own text for a visit.
    using Note = std::function<std::optional<TypedNote>(const Visit&)>;

    /// Files of this machine are written on `local`, as the journal is. Goes on with what the journal holds.
    StillFiles(WorkThread& local, PictureJournal& journal, Note note);
    ~StillFiles() override;

    /// Gives the picture's identity.
    QString File(const Picture& picture);
    /// Pictures that aren't safe yet.
    int UnderWay() const;
    /// How many wait on the local disk, those that were deleted not counted.
    int Waiting() const;
    /// The share doesn't answer, or hasn't taken them all yet.
    bool IsShareAway() const;
    /// A picture that has no number yet has been deleted: it goes to the deleted pictures when the share has it.
    void Delete(const QString& id);

    /// Numbers of a deletion are taken again only behind its end.
    void Hold(const DeletionJob& job);
    void LetGo(const DeletionJob& job);
    /// Work on files of the share, behind what is under way there.
    void Post(std::function<void()> work) { m_share.Post(std::move(work)); }
    bool IsIdle() const { return m_share.IsIdle(); }
    const std::shared_ptr<CaptureNumbers>& SharedNumbers() const { return m_numbers; }
    /// Waits for a picture that is being encoded and for the share where it answers, some seconds at most; what hasn't
    /// come there then is the next run's. What `local` still has to write is for whoever owns it to wait for.
    void End();

    /// Path of a picture on the local disk.
    static QString LocalPath(const QString& id);
    /// What the names of these files begin with.
    static constexpr char16_t LocalPrefix[] = u"Spool-";

Q_SIGNALS:
    /// A picture stands under its number.
    void Filed(const QString& id);
    /// It waited for that, and the screen knows.
    void Moved(const QString& id);
    /// For the operator: a disk that reports faults.
    void Tidings(const QString& text);
    /// How many wait is another now.
    void Changed();

private:
    struct Placing;
    class LocalDisk;
    using PlacingPointer = std::shared_ptr<Placing>;
    struct Placed
    {
        int number = 0; ///< 0 for one that needs no place any more.
        QString fault;  ///< The file stands, but the disk reported a fault.
        PictureSum sum{};
    };

    /// On the share's thread.
    static Placed Place(Placing& still, const QByteArray& content, CaptureNumbers& numbers);
    static void ThrowAway(const Placing& still, int number, CaptureNumbers& numbers);
    static Placed PlaceFile(const Placing& still, const QByteArray& content, CaptureNumbers& numbers);

    void Encode(const PlacingPointer& still, std::function<QByteArray()> encode);
    void HandOverEncoded(const PlacingPointer& still);
    /// On the encoder's thread, behind what the picture's way needs.
    void TakeSum(const PlacingPointer& still, const QByteArray& content);
    void KeepLocally(const PlacingPointer& still, const QByteArray& content);
    void RemoveLocally(const QString& id);
    /// One that isn't the first lets those that wait go before it.
    void HandOver(const PlacingPointer& still, const QByteArray& content, bool isFirst);
    void AnswerEncoded(const PlacingPointer& still, const QByteArray& content);
    void AnswerLocal(const PlacingPointer& still, const std::exception_ptr& fault);
    void AnswerPlaced(const PlacingPointer& still, const Placed& placed, const std::exception_ptr& fault);
    void AnswerAtShare(const PlacingPointer& still, const Placed& placed);
    /// The share hasn't answered for the first of them.
    void LoseShare();
    /// It waits, if the local disk has it.
    void LetWait(const PlacingPointer& still);
    void Refuse(const PlacingPointer& still, const std::exception_ptr& fault);
    void MoveNext();

    WorkThread& m_local;
    PictureJournal& m_journal;
    const Note m_note;
    const std::shared_ptr<LocalDisk> m_disk;
    const std::shared_ptr<CaptureNumbers> m_numbers = std::make_shared<CaptureNumbers>();
    /// The share has refused one, and nothing may pass it.
    const std::shared_ptr<std::atomic<bool>> m_isAway = std::make_shared<std::atomic<bool>>(false);
    WorkThread m_encoder;
    WorkThread m_share;
    QList<PlacingPointer> m_road; ///< In the order of the presses, until the share has them.
    QTimer m_patience;
    QTimer m_retry;
    const QPointer<StillFiles> m_self{this};
};
