#pragma once

#include "contracts/dicom.h"
#include "pacs/PacsLine.h"

#include <QDateTime>
#include <QHash>
#include <QList>

#include <memory>
#include <optional>

class LocalDatabase;

/// What gives a picture's row its turn behind all others.
inline constexpr char16_t NewTurn[] = u"place = ( SELECT MAX( place ) + 1 FROM picture ), revision = revision + 1";

/// The sender's own hand on its queue: it alone changes what becomes of a picture. Each call is one transaction.
class Ledger
{
public:
    /// Opens the queue. One that can't be read is put aside under another name, and a new one made. What an earlier
    /// sender had under way may be at the server. Throws PlatformError.
    Ledger();
    ~Ledger();
    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    /// What the setup says of lines.
    struct Rules
    {
        bool sendsEach = false; ///< No visit needs to be stored.
        bool rejects = false;   ///< What is deleted after it was sent is rejected at the server.
    };
    /// What lines want of the sender itself.
    struct Orders
    {
        bool isRetry = false;
        QString setup; ///< What the setup is known by now; empty when nobody has said.
        bool areAny = false;
    };
    /// Takes all lines.
    Orders TakeLines(const Rules& rules);

    /// A visit of which the rows tell what belongs to it.
    struct VisitToAsk
    {
        QString chart;
        QString ymd;
        QString etc;
        QString doctor;
        QString imageExt;
    };
    QList<VisitToAsk> VisitsToAsk();
    /// Visits of which pictures wait for somebody to store them, the latest first, as many as `most` says.
    QList<VisitToAsk> HeldVisits(int most);
    /// Somebody has: at another station.
    void Release(const VisitToAsk& visit);
    /// Those of its pictures that aren't known go too.
    void TakeNumbers(const VisitToAsk& visit, const QList<int>& numbers);
    /// An earlier release may have sent pictures of the visit.
    bool MayHaveBeenSent(const PacsEntry& entry);
    void MarkSent(const PacsEntry& entry);

    /// When the visit's first picture was taken, as far as the queue tells; empty otherwise.
    QDateTime FirstTakenAt(const PacsEntry& entry);

    /// The first that wait and needn't wait for themselves any more, movies behind all others.
    QList<PacsEntry> Due(int most);
    /// What else the queue knows of an entry's picture.
    struct Siblings
    {
        QList<DicomReference> stored;  ///< That the server has of it, whichever part.
        bool isOriginalAside = false;  ///< The server has refused its original.
        QHash<QString, bool> rejected; ///< Objects that are, or are to be, rejected; true once that may have gone.
    };
    Siblings SiblingsOf(const PacsEntry& entry);
    /// The picture's original goes first, and the entry behind it.
    void PutBehindOriginal(const PacsEntry& entry);
    /// It isn't deleted after all.
    void DropRejection(const PacsEntry& entry, const QString& uid);
    /// That is what the server has of the deleted picture that the entry tells of.
    void TakeFound(const PacsEntry& entry, const QList<DicomReference>& found);
    /// The first of the movies that are still to be made ready; nothing when none is due.
    std::optional<PacsEntry> RawMovie();
    void MovieIsReady(const PacsEntry& entry, const QString& facts);
    /// Identities of all that have a file of their own on this machine and may still need it.
    QStringList NeededFiles();
    int Waiting();
    /// Why the first of them waits for itself; empty when it doesn't.
    QString FirstReason();
    /// How many of those that wait don't do so for that reason.
    int WaitingBut(const QString& reason);
    /// From here on the server may have them.
    void Begin(const QList<PacsEntry>& entries);
    /// It is still to go, and as it was when it was begun.
    bool IsStill(const PacsEntry& entry);

    /// What the server has of one now.
    struct Stored
    {
        DicomReference object;
        int instance = 0;
        int restorings = 0;
        QString original = {};  ///< Of the picture that this one was marked up from; empty for any other.
        QDateTime takenAt = {}; ///< Where the queue knew none; invalid otherwise.
    };
    /// What became of one that was begun. A line that came meanwhile stands above it.
    void Sent(const PacsEntry& entry, const Stored& stored);
    void SetAside(const PacsEntry& entry, const QString& reason);
    /// There is no such picture.
    void Gone(const PacsEntry& entry);
    /// It waits for itself for that time, and comes behind those that are there by then. `isDoubtful`: the server may
    /// have it.
    void Later(const PacsEntry& entry, const QString& reason, int waitMs, bool isDoubtful);
    /// Those that were begun and have no end wait again.
    void PutBack(bool areDoubtful);

    void Tell(const QString& name, const QString& value);
    /// What is older than a year, and not on its way, is forgotten.
    void ForgetOld(const QDate& today);

private:
    void Open();
    void OpenPatiently();
    QList<VisitToAsk> Visits(const QString& rest);
    void End(const PacsEntry& entry, PacsState state, const QString& reason);

    std::unique_ptr<LocalDatabase> m_database;
    Rules m_rules;
};
