#include "records/tables.h"

#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "records/Statement.h"

#include <QSet>

#include <mutex>

using namespace Qt::StringLiterals;

bool EnsureTable(ConnectionPointer& connection, const QString& extra, const QString& table, bool create, QString* fault)
{
    const QString database = connection->DefaultDatabase();
    const auto keeper = CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s);
    const auto tables = connection->Execute(Statement(u" SHOW TABLES FROM ").Piece(database).Piece(u" ").Text());
    tables->setFilter(Statement(u" tables_in_").Piece(database).Quoted(u" = '", table).Text());
    bool there = HasRow(*tables);
    if (!there && create) {
        try {
            keeper->tablecreate(connection, table, extra);
        } catch (const PlatformError& error) {
            // Not every account may make tables, and not every visit needs this one.
            if (fault != nullptr)
                *fault = error.Text();
        }
        there = true;
    }
    tables->Close();
    return there;
}

void NoteWithoutTable(const QString& sentence, const PlatformError& error)
{
    static std::mutex mutex;
    static auto& noted = *new QSet<QString>;
    const std::lock_guard lock(mutex);
    if (noted.contains(sentence))
        return;
    noted.insert(sentence);
    journal::NoteFault(sentence + u" capture-station-admin upgrade-tables를 실행하십시오\n"_s + error.Text());
}

QString FittingColumn(const QString& text, qsizetype characters)
{
    QString cut = text.trimmed().left(characters);
    if (cut.size() == characters && cut.back().isHighSurrogate())
        cut.chop(1);
    return cut.trimmed();
}
