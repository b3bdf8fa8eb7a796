#include "sender/former_lists.h"

#include "filing/ProcessList.h"
#include "filing/visit_json.h"
#include "frame/journal.h"
#include "pacs/SenderQueue.h"
#include "sender/Ledger.h"

#include <QJsonArray>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

/// The same each time, should the list be read again.
QString IdentityOf(const PacsLine& line)
{
    const QString name = u"%1/%2/%3/%4"_s.arg(line.chart, line.ymd, line.etc).arg(line.number);
    return QUuid::createUuidV5(QUuid(), name).toString(QUuid::Id128);
}

QList<PacsLine> WaitingIn(const QJsonObject& list)
{
    QList<PacsLine> lines;
    const QJsonArray entries = list.value(u"entries"_s).toArray();
    for (const auto& value : entries) {
        const QJsonObject json = value.toObject();
        PacsLine line = PacsLine::Of(PacsLine::Changed, VisitFromJson(json), json.value(u"number"_s).toInt());
        line.id = IdentityOf(line);
        line.doctor = json.value(u"doctor"_s).toString();
        line.goes = true;
        if (line.number > 0)
            lines.append(line);
    }
    return lines;
}

void TakeSent(Ledger& ledger, const QJsonObject& list)
{
    const QJsonArray marks = list.value(u"sent"_s).toArray();
    for (const auto& value : marks) {
        const QJsonObject json = value.toObject();
        const Visit visit = VisitFromJson(json);
        PacsEntry entry;
        entry.chart = visit.chart;
        entry.ymd = visit.ymd;
        entry.etc = visit.etc;
        entry.number = json.value(u"number"_s).toInt();
        entry.uid = json.value(u"uid"_s).toString();
        if (entry.number > 0)
            ledger.MarkSent(entry);
    }
}

} // namespace

void TakeFormerLists(Ledger& ledger)
{
    ProcessList lists(u"Pacs"_s);
    QList<PacsLine> waiting;
    const auto read = [&](const QJsonDocument& document, bool) {
        TakeSent(ledger, document.object());
        waiting += WaitingIn(document.object());
    };
    if (lists.TakeOver(read)) {
        journal::NotingFaults([&] {
            SenderQueue().Add(waiting);
            lists.RemoveTaken();
            journal::Note(Journal::Information, u"앞 판이 남긴 PACS 대기 %1장을 이어받음"_s.arg(waiting.size()));
        });
    }
    lists.End(std::nullopt);
}
