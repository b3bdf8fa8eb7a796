#pragma once

#include "contracts/files.h"
#include "pacs/PacsLine.h"
#include "pacs/service_rows.h"

#include <QList>

#include <memory>
#include <optional>

class LocalDatabase;

/// Why pictures wait while the setup gives the clinic no name that tells it from every other.
inline constexpr char16_t NoIdentityText[] =
    u"PACS에 알릴 기관이 정해지지 않았습니다.!! 설정의 [Pacs] Institution이나 UidRoot를 적으십시오.";

/// The pictures of this user and machine that are on their way to the clinic's server, in one file on the local disk.
/// The station and the administrator's program add lines to it and look at it; the sender keeps it. One thread at a
/// time uses an object.
class SenderQueue
{
public:
    /// How it stands with it all.
    struct State
    {
        int waiting = 0; ///< Pictures that go, and lines by which others will.
        int lines = 0;   ///< Those: the sender hasn't seen them.
        int movies = 0;  ///< That are still to be made ready.
        int setAside = 0;
        int held = 0;      ///< Pictures whose visit hasn't been stored here, and lines of such,
        int heldLines = 0; ///< those alone.
        int sent = 0;      ///< Since nothing waited.
        int staying = 0;   ///< Deleted pictures that the server still has, and isn't told of.
        QString away;      ///< Why nothing goes; empty while it does.
        QString setup;     ///< What the sender's setup is known by.
        bool isSenderThere = false;
        int serviceLines = 0;      ///< Lines for the hospital's other servers: the sender hasn't seen them.
        service_rows::Kinds due;   ///< Of which something is to be asked or told now.
        bool hasOpenSteps = false; ///< Performed steps that haven't been closed.
        int uncommitted = 0;       ///< Pictures that the server doesn't answer for, though they went twice.

        /// Nothing goes before the setup is another one.
        bool NeedsSetup() const { return away == QStringView(NoIdentityText); }
        bool operator==(const State&) const = default;
    };

    /// A queue as it lies in a folder.
    struct Found
    {
        QString path;
        QString foreignOwner; ///< User's name, unless it is this process's user.
        bool isReadable = false;
        bool isSenderThere = false;
        QString away;
        int lines = 0;
        QList<PacsEntry> entries;                    ///< That wait or are set aside.
        QList<PacsEntry> staying;                    ///< Deleted here, and still at the server.
        QList<service_rows::Step> steps;             ///< That the server is still to hear of, or has refused.
        QList<service_rows::Commitment> commitments; ///< That the server doesn't answer for.
    };
    /// The queues in a program's folder, also those that were put aside. Changes none.
    static QList<Found> In(const QString& folder);

    /// File of this user's queue on this machine.
    static QString Path();
    /// What only a sender that runs holds.
    static QString LockPath();

    /// Opens the file, which is made when it isn't there. Throws PlatformError.
    SenderQueue();
    ~SenderQueue();
    SenderQueue(const SenderQueue&) = delete;
    SenderQueue& operator=(const SenderQueue&) = delete;

    /// All of them or none; they are on the disk then. Throws PlatformError.
    void Add(const QList<PacsLine>& lines);
    /// Throws PlatformError.
    State Look();
    /// What the server has taken from that time on (ISO 8601, local, with milliseconds). Throws PlatformError.
    QList<PacsEntry> SentSince(const QString& time);

    /// How it stands with the worklist's entry for a visit; nothing for one that no screen has shown. Throws
    /// PlatformError.
    std::optional<service_rows::Worklist> WorklistOf(const Visit& visit);
    /// What the server has of pictures that are deleted here, and hasn't been told of that. Throws PlatformError.
    QList<PacsEntry> Staying();

private:
    std::unique_ptr<LocalDatabase> m_database;
};
