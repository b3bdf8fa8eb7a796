#include "records/acts.h"

#include "frame/components.h"
#include "records/ActJournal.h"
#include "visit/Visit.h"

#include <array>

using namespace Qt::StringLiterals;

QString acts::WordOf(Kind kind)
{
    static const std::array words{
        u"visit-opened"_s,   u"history-opened"_s,  u"filed"_s,       u"imported"_s,    u"marked-up"_s,
        u"looked-at"_s,      u"deleted"_s,         u"restored"_s,    u"swept"_s,       u"printed"_s,
        u"dragged-out"_s,    u"written-to-disc"_s, u"sent"_s,        u"note-stored"_s, u"report-stored"_s,
        u"report-deleted"_s, u"report-printed"_s,  u"searched"_s,    u"report-sent"_s, u"movie-sent"_s,
        u"rejected"_s,       u"administered"_s,    u"order-taken"_s, u"step-sent"_s,   u"committed"_s};
    // Each kind has its own.
    static_assert(std::tuple_size_v<decltype(words)> == static_cast<std::size_t>(Kind::Committed) + 1);
    return words.at(static_cast<std::size_t>(kind));
}

void acts::Record(const Act& act)
{
    if (ActJournal* journal = ServiceSlot<ActJournal>().get())
        journal->Record(act);
}

acts::Act acts::Of(Kind kind, const Visit& visit, int number)
{
    return {kind, visit.chart, visit.ymd.trimmed(), visit.etc, number};
}

void acts::Record(Kind kind, const Visit& visit, int number, const QString& detail)
{
    Act act = Of(kind, visit, number);
    act.detail = detail;
    Record(act);
}
