#include "admin/TableUpgrade.h"

#include "records/Statement.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int MostRowsTold = 5;
const QString Utf8 = u"utf8mb4"_s;

/// The kinds of long texts, each larger than the one before; the third holds what any operator writes.
const QStringList& LongTexts()
{
    static const QStringList kinds{u"tinytext"_s, u"text"_s, u"mediumtext"_s, u"longtext"_s};
    return kinds;
}

QString Quoted(const QString& text)
{
    return Statement().Quoted(u"'", text).Text().trimmed();
}

/// A column's bytes, read as text of a set.
QString ReadAs(const QString& column, const QString& set)
{
    return u"CONVERT(CONVERT(CAST(%1 AS BINARY) USING %2) USING utf8mb4)"_s.arg(column, set);
}

/// The condition that its bytes are no whole text of the set.
QString IsNoTextOf(const QString& column, const QString& set)
{
    return u"HEX(CAST(CONVERT(%1 USING %2) AS BINARY)) <> HEX(CAST(%3 AS BINARY))"_s.arg(ReadAs(column, set), set,
                                                                                         column);
}

/// Each byte above 127 becomes a letter of two bytes or three.
QString IsNotAscii(const QString& column)
{
    return u"LENGTH(%1) <> LENGTH(%2)"_s.arg(ReadAs(column, u"latin1"_s), column);
}

/// The condition that its bytes read as Hangul in the set.
QString LooksLike(const QString& column, const QString& set)
{
    return u"%1 AND NOT (%2) AND %3 REGEXP '[가-힣]'"_s.arg(IsNotAscii(column), IsNoTextOf(column, set),
                                                            ReadAs(column, set));
}

/// What stands behind the type, all of it: what isn't said again is lost.
QString Rest(const TableColumn& column)
{
    QString rest = column.isNullable ? u" NULL"_s : u" NOT NULL"_s;
    if (!column.defaultValue.isEmpty())
        rest += u" DEFAULT "_s + column.defaultValue;
    if (!column.comment.isEmpty())
        rest += u" COMMENT "_s + Quoted(column.comment);
    return rest;
}

QString Modify(const TableColumn& column, const QString& type, const QString& set, const QString& collation)
{
    const QString sets = set.isEmpty() ? QString() : u" CHARACTER SET %1 COLLATE %2"_s.arg(set, collation);
    return u"MODIFY %1 %2%3%4"_s.arg(column.name, type, sets, Rest(column));
}

QString ByteType(const TableColumn& column)
{
    QString type = column.type;
    return type.endsWith(u"text"_s) ? type.replace(u"text"_s, u"blob"_s) : u"varbinary(%1)"_s.arg(column.length);
}

/// Of the same room for texts.
QString TextType(const TableColumn& column)
{
    QString type = column.type;
    if (type.endsWith(u"text"_s))
        return type;
    if (type.endsWith(u"blob"_s))
        return type.replace(u"blob"_s, u"text"_s);
    return u"varchar(%1)"_s.arg(column.length);
}

/// The column's own type where it has room, otherwise one that has. Letters of another set may take more bytes, which
/// are what a long text counts.
QString RoomyType(const TableColumn& column, const TableDefinition::Column& wanted, qint64 needed, bool changesSet)
{
    QString own = column.IsBinary() ? TextType(column) : column.fullType;
    const qsizetype ownKind = LongTexts().indexOf(TextType(column));
    const qsizetype wantedKind = LongTexts().indexOf(wanted.type.toLower());
    const bool isTooShort = column.length < needed;
    if (ownKind >= 0 && (isTooShort || changesSet))
        return LongTexts().at(
            std::clamp(qMax(wantedKind, isTooShort ? ownKind + 1 : ownKind), qsizetype(2), qsizetype(3)));
    if (!isTooShort)
        return own;
    return wantedKind >= 0 ? LongTexts().at(wantedKind) : u"varchar(%1)"_s.arg(qMax(needed, wanted.length));
}

} // namespace

TableUpgrade TableUpgrade::Plan(const QString& table, const UpgradeWishes& wishes)
{
    TableUpgrade upgrade;
    upgrade.m_table = table;
    upgrade.m_wishes = wishes;
    QList<TableColumn> columns = ColumnsOf(table, true);
    if (columns.isEmpty())
        return upgrade;
    const TableDefinition wanted = TableDefinition::Of(table);
    upgrade.m_wantedKeys = wanted.keys;
    upgrade.m_keys = KeysOf(table, true);
    if (!std::ranges::equal(columns, wanted.columns, {}, &TableColumn::name, &TableDefinition::Column::name)) {
        upgrade.m_refusals << u"칸의 수나 순서가 다릅니다. %1.sql과 같게 고친 다음 다시 실행하십시오"_s.arg(table);
        return upgrade;
    }
    const QStringList ownKey = wanted.keys.first().split(u',');
    const bool lacksOwnKey = FaultsOf(upgrade.m_keys, wanted.keys).lacksOwn;
    for (qsizetype at = 0; at < columns.size(); ++at) {
        TableColumn& column = columns[at];
        if (lacksOwnKey && column.isNullable && ownKey.contains(column.name)) {
            if (upgrade.Count(column.name + u" IS NULL"_s) > 0)
                upgrade.m_refusals << u"%1이(가) 빈(NULL) 줄이 있어 기본 키를 둘 수 없습니다"_s.arg(column.name);
            column.isNullable = false;
            if (column.defaultValue == u"NULL")
                column.defaultValue.clear();
        }
        upgrade.PlanColumn(column, wanted.columns.at(at));
    }
    upgrade.PlanDefault();
    upgrade.PlanKeys(wanted.keyNames);
    const auto alter = [&](const QStringList& changes) {
        if (!changes.isEmpty())
            upgrade.m_statements << u"ALTER TABLE %1 %2"_s.arg(table, changes.join(u", "_s));
    };
    if (upgrade.m_refusals.isEmpty()) {
        alter(upgrade.m_toBytes);
        alter(upgrade.m_toSet);
        alter(upgrade.m_changes);
    }
    return upgrade;
}

void TableUpgrade::PlanColumn(const TableColumn& column, const TableDefinition::Column& wanted)
{
    const qsizetype before = m_changes.size() + m_toBytes.size() + m_toSet.size();
    const bool isNumber = wanted.length == 0;
    m_plain << (isNumber ? u"CAST(CAST(%1 AS SIGNED) AS CHAR)"_s : u"CONVERT(%1 USING utf8mb4)"_s).arg(column.name);
    m_meant << m_plain.last();
    if (isNumber)
        PlanNumber(column);
    else
        PlanText(column, wanted);
    if (m_changes.size() + m_toBytes.size() + m_toSet.size() > before && !column.extra.isEmpty())
        m_refusals << u"%1은(는) 보통 칸이 아닙니다(%2)"_s.arg(column.name, column.extra);
}

void TableUpgrade::PlanNumber(const TableColumn& column)
{
    if (column.IsWholeNumber())
        return;
    const QString strange = u"NOT (TRIM(CAST(%1 AS CHAR)) REGEXP '^-?[0-9]{1,5}$' AND "
                            "CAST(%1 AS SIGNED) BETWEEN -32768 AND 32767)"_s.arg(column.name);
    if (Count(strange) > 0) {
        m_refusals << u"%1에 번호가 아닌 것이 있습니다: %2"_s.arg(
            column.name, RowsWhere(strange, u"CAST(%1 AS CHAR)"_s.arg(column.name)));
        return;
    }
    TableColumn number = column;
    if (number.defaultValue.startsWith(u'\''))
        number.defaultValue = QString::number(number.defaultValue.mid(1, number.defaultValue.size() - 2).toInt());
    m_changes << Modify(number, u"smallint"_s, {}, {});
}

void TableUpgrade::PlanText(const TableColumn& column, const TableDefinition::Column& wanted)
{
    const qint64 needed = TableDefinition::LengthOf(wanted, m_wishes.captureRoot);
    if (column.characters.isEmpty() && !column.IsBinary()) {
        m_refusals << u"%1은(는) 글을 담는 칸이 아닙니다(%2). 이미 잃은 것이 있을 수 있습니다"_s.arg(column.name,
                                                                                                     column.fullType);
        return;
    }
    QString set = column.characters;
    QString collation = column.collation;
    if (!column.HoldsKorean()) {
        if (!PlanBytes(column, m_wishes.bytes))
            return;
        set = Utf8;
    } else if (m_wishes.toUtf8mb4 && set != Utf8) {
        if (const QString lost = IsNoTextOf(column.name, set); Count(lost) > 0) {
            m_refusals << u"%1에 %2에서 옮길 수 없는 글자가 있습니다: %3"_s.arg(column.name, set,
                                                                                RowsWhere(lost, m_plain.last()));
            return;
        }
        set = Utf8;
    }
    if (set != column.characters)
        collation = u"utf8mb4_bin"_s;
    const QString type = RoomyType(column, wanted, needed, set != column.characters);
    if (set != column.characters || type != column.fullType)
        m_changes << Modify(column, type, set, collation);
}

bool TableUpgrade::PlanBytes(const TableColumn& column, const QString& said)
{
    QString set = said;
    if (Count(IsNotAscii(column.name)) == 0) {
        if (!column.IsBinary())
            return true;
        set = Utf8; // As any other would do.
    }
    if (set.isEmpty()) {
        QStringList looks;
        for (const auto& [kind, name] : {std::pair{u"euckr"_s, u"euckr"_s}, {Utf8, u"utf8"_s}}) {
            const QString condition = LooksLike(column.name, kind);
            if (Count(condition) > 0)
                looks << u"--bytes=%1로 읽으면 %2"_s.arg(name, RowsWhere(condition, ReadAs(column.name, kind)));
        }
        if (looks.isEmpty() && !column.IsBinary())
            return true;
        m_refusals << u"%1(%2)의 글이 어느 문자 집합인지 --bytes=로 알려 주십시오. %3"_s.arg(
            column.name, column.IsBinary() ? column.fullType : column.characters, looks.join(u"; "_s));
        return false;
    }
    if (const QString broken = IsNoTextOf(column.name, set); Count(broken) > 0) {
        m_refusals << u"%1에 %2(으)로 읽을 수 없는 줄이 있습니다: %3"_s.arg(
            column.name, set, RowsWhere(broken, u"HEX(LEFT(%1, 20))"_s.arg(column.name)));
        return false;
    }
    if (set == column.characters)
        return true;
    m_meant.last() = ReadAs(column.name, set);
    // Neither step looks at a letter: the bytes stay, and get the set that they are in.
    TableColumn bare = column;
    if (bare.defaultValue != u"NULL" && bare.defaultValue != u"''")
        bare.defaultValue.clear();
    if (!column.IsBinary())
        m_toBytes << Modify(bare, ByteType(column), {}, {});
    m_toSet << Modify(bare, TextType(column), set, set + u"_bin"_s);
    return true;
}

void TableUpgrade::PlanDefault()
{
    if (m_changes.isEmpty())
        return;
    const auto rows =
        OpenRows(Statement(u" SELECT table_collation FROM information_schema.tables WHERE table_schema = DATABASE() ")
                     .Quoted(u" AND table_name = '", m_table));
    if (!FieldText(*rows, 0).startsWith(Utf8))
        m_changes << u"DEFAULT CHARACTER SET utf8mb4 COLLATE utf8mb4_bin"_s;
}

void TableUpgrade::PlanKeys(const QStringList& names)
{
    const KeyFaults faults = FaultsOf(m_keys, m_wantedKeys);
    if (faults.lacksOwn) {
        const QString own = m_wantedKeys.first();
        const bool hasPrimary = std::ranges::count(m_keys, u"PRIMARY"_s, &TableKey::name) > 0;
        Statement doubles;
        doubles.Piece(u" SELECT COUNT(*) AS found FROM (SELECT 1 FROM %1 GROUP BY %2 HAVING COUNT(*) > 1) d "_s.arg(
            m_table, own));
        const qint64 found = OpenRows(doubles)->Fields(0).toLongLong();
        if (hasPrimary)
            m_refusals << u"다른 기본 키가 있습니다. 스테이션의 기본 키는 (%1)입니다"_s.arg(own);
        else if (found > 0)
            m_refusals << u"같은 (%1)의 줄이 둘 이상인 것이 %2건 있어 기본 키를 둘 수 없습니다"_s.arg(own).arg(found);
        else
            m_changes << u"ADD PRIMARY KEY (%1)"_s.arg(own);
    }
    for (const QString& missing : faults.missing) {
        const QString name = names.value(m_wantedKeys.indexOf(missing));
        if (std::ranges::count(m_keys, name, &TableKey::name) > 0)
            m_changes << u"DROP KEY "_s + name;
        m_changes << u"ADD KEY %1 (%2)"_s.arg(name, missing);
    }
}

qint64 TableUpgrade::Count(const QString& condition) const
{
    return OpenRows(Statement(u" SELECT COUNT(*) AS found FROM %1 WHERE %2 "_s.arg(m_table, condition)))
        ->Fields(0)
        .toLongLong();
}

QString TableUpgrade::RowsWhere(const QString& condition, const QString& text) const
{
    const QStringList key = m_wantedKeys.first().split(u',').first(qMin(2, m_wantedKeys.first().count(u',') + 1));
    QStringList told;
    const auto rows = OpenRows(Statement(u" SELECT CONCAT_WS(' ', %1), LEFT(%2, 20) FROM %3 WHERE %4 LIMIT %5 "_s.arg(
        key.join(u", "_s), text, m_table, condition, QString::number(MostRowsTold))));
    for (; !rows->Eof(); rows->MoveNext())
        told << u"%1 \"%2\""_s.arg(FieldText(*rows, 0), FieldText(*rows, 1).simplified());
    return u"%1줄 (%2)"_s.arg(Count(condition)).arg(told.join(u", "_s));
}

QString TableUpgrade::Checksum(bool isDone) const
{
    QStringList values;
    for (const QString& value : isDone ? m_plain : m_meant)
        values << u"IFNULL(MD5(%1), '-')"_s.arg(value);
    const auto half = [](const QString& side) {
        return u"CAST(SUM(CAST(CONV(%1(r.h, 15), 16, 10) AS DECIMAL(30, 0))) AS CHAR)"_s.arg(side);
    };
    const auto rows =
        OpenRows(Statement(u" SELECT COUNT(*), %1, %2 FROM (SELECT MD5(CONCAT_WS(',', %3)) AS h FROM %4) r "_s.arg(
            half(u"LEFT"_s), half(u"RIGHT"_s), values.join(u", "_s), m_table)));
    return QStringList{FieldText(*rows, 0), FieldText(*rows, 1), FieldText(*rows, 2)}.join(u' ');
}
