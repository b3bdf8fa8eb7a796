#include "records/visit_note.h"

#include "contracts/PlatformError.h"
#include "records/acts.h"
#include "records/capture_index.h"
#include "records/Statement.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// So often another station may be quicker.
constexpr int MostTries = 5;

struct Row
{
    bool isThere = false;
    QString note;
};

Row ReadRow(const Visit& visit)
{
    const auto rows = OpenRows(Statement(u" SELECT ca_chamgo FROM ca ").OfVisit(u"ca"_s, visit));
    return HasRow(*rows) ? Row{true, rows->Fields(0).toString()} : Row{};
}

/// True when the row held `before`, and holds the note now.
bool Replace(const Visit& visit, const QString& note, const QString& before)
{
    Statement statement(u" UPDATE ca SET ");
    statement.Then(u" ca_chamgo = '", note).Piece(u"' ").OfVisit(u"ca"_s, visit);
    if (Trim(before).isEmpty())
        statement.Piece(u" AND ( ca_chamgo IS NULL OR TRIM(ca_chamgo) = '' ) ");
    else
        statement.Piece(u" AND ").Same(u"ca_chamgo"_s, before);
    return Execute(statement) > 0;
}

void RecordStored(const Visit& visit, const QString& note, const QString& before)
{
    if (Trim(note) == Trim(before))
        return;
    acts::Act act = acts::Of(acts::Kind::NoteStored, visit);
    act.before = before;
    acts::Record(act);
}

QString LineEndOf(const QString& text)
{
    return text.contains(u"\r\n"_s) ? u"\r\n"_s : u"\n"_s;
}

/// A column that is too short has kept less than it was given.
bool IsWhole(const QString& kept, const QString& given)
{
    return Trim(kept).toUcs4().size() >= Trim(given).toUcs4().size();
}

} // namespace

QString RawNote(const Visit& visit)
{
    return ReadRow(visit).note;
}

bool AddVisitRow(const Visit& visit, const QString& note)
{
    Statement statement(u" INSERT INTO ca SELECT ");
    statement.Then(u" '", visit.chart)
        .Then(u"', '", visit.yuhyung)
        .Then(u"', '", visit.ymd)
        .Then(u"', 'A', '", visit.etc)
        .Then(u"', '", NoteForStore(note))
        .Piece(u"', '' FROM ( SELECT 1 ) AS one WHERE NOT EXISTS ( SELECT * FROM ca ")
        .OfVisit(u"ca"_s, visit)
        .Piece(u" ) ");
    try {
        return Execute(statement) > 0;
    } catch (const DatabaseAway&) {
        throw;
    } catch (const PlatformError&) {
        // The key of the table lets only one of two stations in.
        if (!ReadRow(visit).isThere)
            throw;
        return false;
    }
}

QString NoteOfAddedRow(const Visit& visit)
{
    // A visit has its row from its first picture on.
    if (const Row row = ReadRow(visit); row.isThere)
        return row.note;
    AddVisitRow(visit, {});
    return RawNote(visit);
}

NoteStored StoreNote(const Visit& visit, const QString& typed, const QStringList& bases, bool addsRow)
{
    const QString note = NoteForStore(typed);
    const auto stored = [&](NoteStored::Outcome outcome, const QString& theirs) {
        return NoteStored{outcome, ReadRow(visit).note, theirs};
    };
    // Where nothing was typed since, there is nothing to change as a rule: a look takes no lock and no commit.
    if (bases.contains(note)) {
        const Row row = ReadRow(visit);
        if (row.isThere && row.note == note)
            return {NoteStored::Stored, row.note, {}};
    }
    for (int tries = 0; tries < MostTries; ++tries) {
        const auto replaces = [&](const QString& base) { return Replace(visit, note, base); };
        if (const auto base = std::ranges::find_if(bases, replaces); base != bases.end()) {
            RecordStored(visit, note, *base);
            return stored(NoteStored::Stored, {});
        }
        const Row row = ReadRow(visit);
        if (!row.isThere) {
            if (!addsRow)
                return {};
            if (AddVisitRow(visit, typed)) {
                RecordStored(visit, note, {});
                return stored(NoteStored::Stored, {});
            }
            continue;
        }
        // Its own, from a statement that arrived without an answer, or one that says it already.
        if (row.note == note || (!Trim(note).isEmpty() && row.note.contains(Trim(note))))
            return stored(NoteStored::Stored, {});
        const QString theirs = Trim(row.note);
        if (Trim(note).isEmpty())
            return stored(NoteStored::Joined, theirs);
        const QString both = NoteForStore(theirs + LineEndOf(row.note) + Trim(typed));
        if (!Replace(visit, both, row.note))
            continue;
        const QString kept = ReadRow(visit).note;
        if (IsWhole(kept, both)) {
            RecordStored(visit, both, row.note);
            return {NoteStored::Joined, kept, theirs};
        }
        Replace(visit, row.note, kept);
        return stored(NoteStored::NoRoom, theirs);
    }
    throw DatabaseAway(u"다른 곳에서 참고사항을 계속 고치고 있습니다.!! 다시 저장하세요.!!"_s);
}
