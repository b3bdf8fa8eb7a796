#pragma once

#include "filing/MarkedPictures.h"
#include "filing/PictureJournal.h"
#include "filing/StillFiles.h"
#include "frame/WorkThread.h"
#include "records/visit_note.h"
#include "visit/Visit.h"

#include <QObject>
#include <QSet>
#include <QTimer>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

/// Files pictures of a visit: number, file, rows. Knows no screen. A picture's rows follow its file, in the order of
/// the presses, and are never waited for. Several stations may file into one visit at the same time; no number is taken
/// twice and no file is ever overwritten.
class StillFiling : public QObject
{
    Q_OBJECT

public:
    /// What has become of the visit's note with a picture.
    struct Note
    {
        std::optional<QString> typed; ///< Was to be stored; nothing when nobody had typed any.
        NoteStored stored;            ///< Without a typed one, what stands in the row.
    };
    /// The operator's own text for the visit, nothing when he has typed none. Asked at the press, and when the rows are
    /// handed over.
    using NoteSource = std::function<std::optional<TypedNote>(const Visit&)>;

    /// A picture whose file and rows are safe.
    struct SafePicture
    {
        QString id;
        Visit visit;
        int number = 0;
        Note note; ///< Stored with it.
    };

    explicit StillFiling(NoteSource note);
    ~StillFiling() override;

    StillFiles& Stills() { return m_files; }
    const StillFiles& Stills() const { return m_files; }

    /// Hands over the rows that wait: those of this station at once, so that they stand in front of what comes next.
    void WriteWaiting();
    /// The same for what an earlier run has left, whose pictures may have gone.
    void WriteLeft();
    /// Stores the operator's own text for a visit, which has a row or stays without one. Throws PlatformError.
    NoteStored StoreTyped(const Visit& visit, const TypedNote& note);
    /// Lets go of a number whose rows are in, on the filing thread. `picture`: identity in its claim; what was taken
    /// for it from the Log folder goes first.
    void Release(const Visit& visit, int number, const QString& picture = {});
    /// A picture of the journal has been deleted, its file too where it stood on the share: what came in of its rows
    /// goes, and its claim.
    void Forget(const QString& id);

    /// The rows have been waited for too long, or the database has refused to answer, and it hasn't answered since.
    bool IsDatabaseAway() const { return m_isAway; }
    /// Nothing more can be done for the pictures by waiting: all have their files, and their rows too, but for those
    /// that the server refuses or doesn't answer for.
    bool IsAtRest() const;

    /// Pictures that the editor replaces.
    MarkedPictures& Marked() { return m_marked; }
    const MarkedPictures& Marked() const { return m_marked; }
    PictureJournal& Journal() { return m_journal; }
    const PictureJournal& Journal() const { return m_journal; }
    /// Makes them when the share answers, before it takes a picture.
    void MakeFoldersLater(const QStringList& folders);
    /// Does it on the screen's thread once the journal's steps up to now are on the disk.
    void AfterJournal(QObject* context, const std::function<void()>& work);
    /// What is under way ends; what waits is left to the next run.
    void End();

Q_SIGNALS:
    void Safe(const StillFiling::SafePicture& picture);
    /// The rows of a picture have to wait.
    void Waits(const QString& id);
    /// For the operator: rows that the server refuses, a disk that reports faults.
    void Tidings(const QString& text);
    /// How many wait, or whether the database is away, is another now.
    void Changed();

private:
    struct Rows;

    void HandOverRows(const QString& id);
    void Submit(const PictureRecord& picture);
    void AnswerRows(const PictureRecord& picture, const Rows& rows, const std::exception_ptr& fault);
    /// The sum of a picture whose rows are in goes behind them: nobody waits for it but the journal.
    void SubmitSum(const PictureRecord& picture);
    void AnswerSum(const PictureRecord& picture, const std::exception_ptr& fault);
    /// The connection's thread; once one fails, those behind it are not tried.
    void Queue(const QString& id, const std::function<void()>& work,
               const std::function<void(const std::exception_ptr&)>& answer);
    void WaitForDatabase();
    /// Takes back what the rows of a picture that has been deleted may have left, then lets go of its number.
    void Undo(const PictureRecord& picture);
    void SetAway(bool isAway);
    void Retry();

    /// What this station has stored as the notes of visits: it is no other one's change. Any thread.
    class OwnNotes
    {
    public:
        /// What may stand in the row without anybody else having changed it.
        QStringList Bases(const Visit& visit, const TypedNote& note) const;
        void Add(const Visit& visit, const NoteStored& stored);

    private:
        mutable std::mutex m_mutex;
        std::vector<std::pair<Visit, QString>> m_notes;
    };

    const NoteSource m_note;
    const std::shared_ptr<OwnNotes> m_ownNotes = std::make_shared<OwnNotes>();
    WorkThread m_local; ///< Files of this machine.
    PictureJournal m_journal;
    StillFiles m_files;
    MarkedPictures m_marked{m_journal};
    QSet<QString> m_forgotten; ///< Deleted while their rows were under way.
    /// Rows handed over earlier have failed: those behind them wait too, so that their order stays.
    const std::shared_ptr<std::atomic<bool>> m_blocked = std::make_shared<std::atomic<bool>>(false);
    QTimer m_retry;
    int m_rowsUnderWay = 0;
    bool m_isAway = false;
};
