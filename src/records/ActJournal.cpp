#include "records/ActJournal.h"

#include "contracts/desktop.h"
#include "contracts/LocalDatabase.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "records/Statement.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QJsonDocument>
#include <QPointer>
#include <QUuid>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString Prefix = u"Acts-"_s;
const QString JournalEnding = u".journal"_s;
const QString LockEnding = u".lock"_s;
/// At one time; stills' rows come between.
constexpr int MostAtOnce = 20;
constexpr int FirstPauseMs = 500;
constexpr int LongestPauseMs = 30'000;
constexpr int MostRefusals = 4;
constexpr int WriterPatienceMs = 2000;
/// Characters of the table's columns.
constexpr qsizetype LongestDetail = 500;
constexpr qsizetype LongestBefore = 1'000'000;

QString PathOf(const QString& mark, const QString& ending)
{
    return UseService<Desktop>().StateFolder() + u'\\' + Prefix + mark + ending;
}

/// One that has a key is the same act each time.
QString IdentityOf(const acts::Act& act)
{
    if (act.key.isEmpty())
        return QUuid::createUuid().toString(QUuid::Id128);
    const QByteArray name = (acts::WordOf(act.kind) + u'/' + act.key).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(name, QCryptographicHash::Sha256).toHex().left(32));
}

QString TimeText()
{
    const QDateTime now = QDateTime::currentDateTime();
    return now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

/// A repeat of a statement that has arrived without an answer meets its own row.
QString InsertStatement(const QString& id, const QJsonObject& columns)
{
    QStringList names{u"log_id"_s};
    Statement values;
    values.Then(u"'", id).Piece(u"'");
    for (auto column = columns.begin(); column != columns.end(); ++column) {
        names << column.key();
        if (column->isString())
            values.Then(u", '", column->toString()).Piece(u"'");
        else
            values.Then(u", ", column->toInt());
    }
    return u" INSERT IGNORE INTO ca_log ( %1 ) VALUES ( "_s.arg(names.join(u", "_s)) + values.Text() + u" ) "_s;
}

} // namespace

/// The file of this process.
struct ActJournal::Local
{
    std::unique_ptr<FileLock> lock;
    std::unique_ptr<LocalDatabase> database; ///< Null when it can't be opened.

    void Open()
    {
        const QString mark = Files().ProcessMark();
        journal::NotingFaults([&] {
            lock = Files().Lock(PathOf(mark, LockEnding));
            database = UseService<LocalDatabases>().Open(PathOf(mark, JournalEnding));
            MakeTable(*database);
        });
    }
    static void MakeTable(LocalDatabase& database)
    {
        database.Run({u"CREATE TABLE IF NOT EXISTS act ( place INTEGER PRIMARY KEY AUTOINCREMENT, "
                      "id TEXT UNIQUE, columns TEXT )"_s});
    }
    static QList<Entry> Read(LocalDatabase& database)
    {
        QList<Entry> entries;
        for (const QVariantList& row : database.Rows(u"SELECT id, columns FROM act ORDER BY place"_s))
            entries.append({row.at(0).toString(), QJsonDocument::fromJson(row.at(1).toString().toUtf8()).object()});
        return entries;
    }
    void Write(const QList<Entry>& entries) const
    {
        QStringList statements;
        for (const Entry& entry : entries)
            statements << Statement(u"INSERT OR IGNORE INTO act ( id, columns ) VALUES ( ")
                              .Then(u"'", entry.id)
                              .Then(u"', '",
                                    QString::fromUtf8(QJsonDocument(entry.columns).toJson(QJsonDocument::Compact)))
                              .Piece(u"' )")
                              .Text();
        if (database != nullptr)
            journal::NotingFaults([&] { database->Run(statements); });
    }
    void Forget(const QList<Entry>& entries) const
    {
        QStringList statements;
        for (const Entry& entry : entries)
            statements << Statement().Quoted(u"DELETE FROM act WHERE id = '", entry.id).Text();
        if (database != nullptr)
            journal::NotingFaults([&] { database->Run(statements); });
    }
    void Close(bool isEmpty)
    {
        const QString mark = Files().ProcessMark();
        const bool goes = isEmpty && database != nullptr;
        database.reset();
        journal::NotingFaults([&] {
            if (goes)
                UseService<LocalDatabases>().Remove(PathOf(mark, JournalEnding));
            DeleteFile(PathOf(mark, LockEnding));
        });
        lock.reset();
    }
};

ActJournal::ActJournal(ActSource source)
    : m_source(std::move(source)), m_run(QUuid::createUuid().toString(QUuid::Id128)), m_local(std::make_shared<Local>())
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &ActJournal::Send);
    m_writer.Post([local = m_local] { local->Open(); });
    TakeOver();
}

ActJournal::~ActJournal()
{
    End(0);
}

void ActJournal::TakeOver()
{
    ++m_onTheirWay;
    m_writer.Post([local = m_local, self = QPointer(this)] {
        const QString folder = UseService<Desktop>().StateFolder() + u'\\';
        QList<Entry> taken;
        for (const QString& name : Files().FilesStartingWith(folder, Prefix)) {
            if (!name.endsWith(JournalEnding))
                continue;
            const QString mark = name.sliced(Prefix.size()).chopped(JournalEnding.size());
            if (Files().HolderOf(mark) != Holder::Dead || !Files().ForeignOwner(folder + name).isEmpty())
                continue;
            journal::NotingFaults([&] {
                const std::unique_ptr<FileLock> lock = Files().Lock(PathOf(mark, LockEnding));
                if (lock == nullptr || local->database == nullptr)
                    return;
                auto database = UseService<LocalDatabases>().Open(folder + name);
                Local::MakeTable(*database);
                const QList<Entry> entries = Local::Read(*database);
                local->Write(entries);
                database.reset();
                UseService<LocalDatabases>().Remove(folder + name);
                DeleteFile(PathOf(mark, LockEnding));
                taken += entries;
            });
        }
        PostToScreen([self, taken] {
            if (self)
                self->TakeIn(taken);
        });
    });
}

void ActJournal::Record(const acts::Act& act)
{
    const std::lock_guard lock(m_mutex);
    if (m_hasEnded)
        return;
    Entry entry{IdentityOf(act),
                {{u"log_at"_s, TimeText()},
                 {u"log_computer"_s, m_source.computer.left(64)},
                 {u"log_user"_s, m_source.user.left(64)},
                 {u"log_program"_s, m_source.program.left(32)},
                 {u"log_run"_s, m_run},
                 {u"log_seq"_s, ++m_lastSeq},
                 {u"log_kind"_s, acts::WordOf(act.kind)},
                 {u"log_refused"_s, act.isRefused ? 1 : 0},
                 {u"log_chart"_s, act.chart.left(20)},
                 {u"log_ymd"_s, act.ymd.left(8)},
                 {u"log_etc"_s, act.etc.left(100)},
                 {u"log_number"_s, act.number},
                 {u"log_picture"_s, act.picture.left(32)},
                 {u"log_detail"_s, act.detail.left(LongestDetail)}}};
    if (!act.before.isNull())
        entry.columns.insert(u"log_before"_s, act.before.left(LongestBefore));
    ++m_onTheirWay;
    m_writer.Post([local = m_local, self = QPointer(this), entry] {
        local->Write({entry});
        PostToScreen([self, entry] {
            if (self)
                self->TakeIn({entry});
        });
    });
}

bool ActJournal::HasAll()
{
    const std::lock_guard lock(m_mutex);
    return m_onTheirWay == 0;
}

void ActJournal::TakeIn(const QList<Entry>& entries)
{
    {
        const std::lock_guard lock(m_mutex);
        --m_onTheirWay;
    }
    if (m_hasNoTable)
        Forget(entries);
    else
        m_waiting += entries;
    Send();
}

void ActJournal::Send()
{
    if (m_isSending || m_waiting.isEmpty() || m_retry.isActive())
        return;
    // The setup hasn't been read yet.
    if (Connection == nullptr) {
        m_retry.start(FirstPauseMs);
        return;
    }
    m_isSending = true;
    const qsizetype most = m_refusals > 0 ? 1 : MostAtOnce;
    const QList<Entry> entries = m_waiting.first(std::min<qsizetype>(m_waiting.size(), most));
    const auto work = [entries] {
        for (const Entry& entry : entries)
            Execute(Statement(InsertStatement(entry.id, entry.columns)));
    };
    QueueStatements(this, work, [this, entries](const std::exception_ptr& fault) { Settle(entries, fault); });
}

void ActJournal::Settle(const QList<Entry>& sent, const std::exception_ptr& fault)
{
    m_isSending = false;
    if (fault != nullptr && guard::Is<TableRefused>(fault)) {
        if (!std::exchange(m_hasNoTable, true))
            journal::Note(Journal::Warning, u"ca_log 테이블이 없거나 쓸 수 없어 접근 기록을 남기지 않음"_s);
        Forget(std::exchange(m_waiting, {}));
        return;
    }
    if (fault != nullptr) {
        // None goes before another, but for one that the server won't ever take: that one stays here.
        if (!guard::Is<Away>(fault) && ++m_refusals > MostRefusals) {
            journal::NoteFault(u"접근 기록: %1"_s.arg(guard::TextOf(fault)));
            m_waiting.removeFirst();
            m_refusals = 0;
        }
        m_pauseMs = std::clamp(m_pauseMs * 2, FirstPauseMs, LongestPauseMs);
        m_retry.start(m_pauseMs);
        return;
    }
    m_pauseMs = m_refusals = 0;
    m_waiting.remove(0, sent.size());
    Forget(sent);
    Send();
}

void ActJournal::Forget(const QList<Entry>& entries)
{
    if (!entries.isEmpty())
        m_writer.Post([local = m_local, entries] { local->Forget(entries); });
}

void ActJournal::End(int patienceMs)
{
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_hasEnded, true))
            return;
    }
    m_writer.AwaitIdle(WriterPatienceMs);
    waiting::ServeFor(patienceMs,
                      [this] { return HasAll() && (m_waiting.isEmpty() || m_pauseMs > 0 || Connection == nullptr); });
    m_retry.stop();
    m_writer.AwaitIdle(WriterPatienceMs);
    m_writer.End(WriterPatienceMs,
                 [local = m_local, isEmpty = HasAll() && m_waiting.isEmpty()] { local->Close(isEmpty); });
}
