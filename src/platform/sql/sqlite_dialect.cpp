#include "platform/sql/sqlite_dialect.h"

#include <QList>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {
bool IsWordCharacter(QChar character)
{
    return character.isLetterOrNumber() || character == u'_' || character == u'$';
}

bool IsQuote(QChar character)
{
    return character == u'\'' || character == u'"' || character == u'`';
}

/// Position behind the quoted text that begins at `from`. A doubled quote reads as two texts side by side, which ends
/// at the same place.
qsizetype BehindQuoted(const QString& text, qsizetype from)
{
    const qsizetype closing = text.indexOf(text.at(from), from + 1);
    return closing < 0 ? text.size() : closing + 1;
}

/// Position of the parenthesis when the word LEFT as a function's name begins at `from`; -1 otherwise.
qsizetype LeftParenthesis(const QString& text, qsizetype from)
{
    const QStringView word = QStringView(text).mid(from, 4);
    if (word.compare(u"LEFT", Qt::CaseInsensitive) != 0)
        return -1;
    qsizetype at = from + 4;
    while (at < text.size() && text.at(at).isSpace())
        ++at;
    return at < text.size() && text.at(at) == u'(' ? at : -1;
}

/// What a piece of a statement without quoted texts says differently.
QString ComparedAsBytes(const QString& piece)
{
    static const QRegularExpression convert(uR"(\bCONVERT\(\s*(\w+)\s+USING\s+utf8mb4\s*\))"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression binary(uR"(\bAS\s+BINARY\b)"_s, QRegularExpression::CaseInsensitiveOption);
    return QString(piece).replace(convert, u"\\1"_s).replace(binary, u"AS BLOB"_s);
}

QString WithoutConvert(const QString& statement)
{
    QString result;
    for (qsizetype at = 0; at < statement.size();) {
        qsizetype quote = at;
        while (quote < statement.size() && !IsQuote(statement.at(quote)))
            ++quote;
        result += ComparedAsBytes(statement.mid(at, quote - at));
        at = quote < statement.size() ? BehindQuoted(statement, quote) : quote;
        result += QStringView(statement).mid(quote, at - quote);
    }
    return result;
}

QString WithoutLeft(const QString& statement)
{
    QString result;
    QList<bool> isLeft; // one for each open parenthesis
    for (qsizetype at = 0; at < statement.size();) {
        const QChar character = statement.at(at);
        if (IsQuote(character)) {
            const qsizetype end = BehindQuoted(statement, at);
            result.append(QStringView(statement).mid(at, end - at));
            at = end;
        } else if (IsWordCharacter(character)) {
            if (const qsizetype parenthesis = LeftParenthesis(statement, at); parenthesis >= 0) {
                result.append(u"substr("_s);
                isLeft.append(true);
                at = parenthesis + 1;
                continue;
            }
            for (; at < statement.size() && IsWordCharacter(statement.at(at)); ++at)
                result.append(statement.at(at));
        } else {
            if (character == u'(')
                isLeft.append(false);
            else if (character == u')' && !isLeft.isEmpty())
                isLeft.removeLast();
            const bool beforeCount = character == u',' && !isLeft.isEmpty() && isLeft.last();
            result.append(beforeCount ? u",1,"_s : QString(character));
            ++at;
        }
    }
    return result;
}
} // namespace

QString sqlite::Translated(const QString& statement)
{
    static const QRegularExpression showTables(uR"(^\s*SHOW\s+TABLES\s+FROM\s+(\w+)\s*;?\s*$)"_s,
                                               QRegularExpression::CaseInsensitiveOption);
    if (const QRegularExpressionMatch match = showTables.match(statement); match.hasMatch()) {
        return u"SELECT name AS tables_in_%1 FROM %1.sqlite_master "
               "WHERE type IN ('table', 'view') AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY name"_s.arg(
                   match.captured(1));
    }
    static const QRegularExpression ignore(uR"(^\s*INSERT\s+IGNORE\b)"_s, QRegularExpression::CaseInsensitiveOption);
    if (const QRegularExpressionMatch match = ignore.match(statement); match.hasMatch())
        return Translated(u"INSERT OR IGNORE"_s + statement.mid(match.capturedEnd()));
    // Looked for first: hardly a statement has one, and some hold long texts.
    return WithoutLeft(statement.contains(u"CONVERT("_s) ? WithoutConvert(statement) : statement);
}
