#pragma once

#include "filing/CaptureNumbers.h"
#include "frame/WorkThread.h"
#include "visit/Visit.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>

class PendingRows;

/// Brings the files of stills into the capture directory, in the order of the presses, under numbers that no other
/// station takes. A share that hasn't answered after a second keeps no picture from safety: it goes, whole, into the
/// spool in the program's folder, and so do all behind it, until the share answers; then they are moved, in order.
///
/// One picture is in one hand at a time. The claim of a number names its picture and outlives the picture's spool file,
/// so that a picture that a dead station was moving is found again and never filed twice.
class StillFiles : public QObject
{
    Q_OBJECT

public:
    /// A picture whose file is to be written.
    struct Picture
    {
        Visit visit;
        /// Gives the content of the file. Runs on a thread of its own; may throw PlatformError.
        std::function<QByteArray()> encode;
        /// Hears the content before it is written.
        std::function<void(const QByteArray&)> encoded;
        /// The file stands under its number, or lies in the spool under one below 0; or it could not be written, and
        /// nothing is left behind.
        std::function<void(int number, std::exception_ptr fault)> filed;
    };
    /// The operator's own text for a visit.
    using Note = std::function<QString(const Visit&)>;

    /// Files of this machine are written on `local`, as the list is. Goes on with what the spool holds.
    StillFiles(WorkThread& local, PendingRows& list, Note note);
    ~StillFiles() override;

    /// Throws PlatformError, and takes no picture, when the share doesn't answer and the spool has no room.
    void File(const Picture& picture);
    /// Pictures that are neither on the share nor in the spool.
    int UnderWay() const;
    /// How many lie in the spool.
    int Spooled() const;
    /// It holds pictures: the share doesn't answer, or hasn't taken them all yet.
    bool IsShareAway() const { return Spooled() > 0; }
    /// A picture of the spool has been deleted.
    void Forget(const Visit& visit, int spooled);

    /// Work on files of the share, behind what is under way there.
    void Post(std::function<void()> work) { m_share.Post(std::move(work)); }
    bool IsIdle() const { return m_share.IsIdle(); }
    CaptureNumbers& Numbers() { return *m_numbers; }
    const std::shared_ptr<CaptureNumbers>& SharedNumbers() const { return m_numbers; }
    /// What waits is left to the next run. Work for `local` is still under way.
    void End();

    /// Path of a picture in the spool.
    static QString SpoolPath(const QString& picture);
    /// What the names of the spool's files begin with.
    static constexpr char16_t SpoolPrefix[] = u"Spool-";

Q_SIGNALS:
    /// A file stands, or lies in the spool; the list has it from here on.
    void Filed(const Visit& visit, int number);
    /// A picture of the spool stands under its number, and has left the spool.
    void Moved(const Visit& visit, int spooled, int number);
    /// For the operator: a disk that reports faults.
    void Tidings(const QString& text);
    /// How many lie in the spool is another now.
    void Changed();

private:
    struct Still;
    using StillPointer = std::shared_ptr<Still>;
    struct Placed
    {
        int number = 0; ///< 0 for a picture of the spool that is nowhere any more.
        QString fault;  ///< The file stands, but the disk reported a fault.
    };

    /// On the share's thread: places the picture, and answers on the screen's.
    static void Place(const QPointer<StillFiles>& self, const StillPointer& still,
                      const std::function<Placed()>& place);
    static Placed PlaceFile(const Still& still, const QByteArray& content, CaptureNumbers& numbers);
    static Placed PlaceSpooled(const Still& still, CaptureNumbers& numbers);
    void CheckSpoolHasRoom() const;
    /// Hands it over to the share, unless others wait for that in the spool.
    void HandOver(const StillPointer& still, const QByteArray& content);
    void AnswerEncoded(const StillPointer& still, const QByteArray& content);
    void AnswerPlaced(const StillPointer& still, const Placed& placed, const std::exception_ptr& fault);
    void AnswerSpooled(const StillPointer& still, const std::exception_ptr& fault);
    /// The share hasn't answered for the first of them.
    void SpoolAll();
    void Spool(const StillPointer& still);
    void MoveNext();
    void Settle(const StillPointer& still);
    void LookAtShare();
    void Leave(const StillPointer& still);

    WorkThread& m_local;
    PendingRows& m_list;
    const Note m_note;
    const std::shared_ptr<CaptureNumbers> m_numbers = std::make_shared<CaptureNumbers>();
    /// Others wait for the share in the spool, and nothing may pass them.
    const std::shared_ptr<std::atomic<bool>> m_isAway = std::make_shared<std::atomic<bool>>(false);
    WorkThread m_encoder;
    WorkThread m_share;
    QList<StillPointer> m_road; ///< In the order of the presses, until the share has them.
    QTimer m_patience;
    QTimer m_retry;
    const QPointer<StillFiles> m_self{this};
};
