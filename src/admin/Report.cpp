#include "admin/Report.h"

#include "admin/commands.h"
#include "frame/terminal.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

QByteArray Compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

void Report::Begin()
{
    if (m_hasBegun)
        return;
    m_hasBegun = true;
    const QByteArray head = Compact({{u"command"_s, m_command}});
    m_out.PutJson(head.chopped(1) + ",\"items\":[");
}

void Report::Item(const QString& line, const QJsonObject& facts)
{
    if (!IsJson()) {
        m_out << line << u'\n';
        return;
    }
    Begin();
    m_out.PutJson((m_hasItems ? ",\n" : "\n") + Compact(facts));
    m_hasItems = true;
}

void Report::Total(const QString& line, const QJsonObject& facts)
{
    for (auto fact = facts.begin(); fact != facts.end(); ++fact)
        m_totals.insert(fact.key(), fact.value());
    if (!IsJson() && !line.isEmpty())
        m_out << line << u'\n';
}

void Report::Fail(const QString& text)
{
    m_totals.insert(u"error"_s, text);
}

void Report::End(int exitCode)
{
    if (!IsJson() || (exitCode == UsedWrongly && !m_hasBegun))
        return;
    Begin();
    m_totals.insert(u"exitStatus"_s, exitCode);
    m_out.PutJson("],\n" + Compact(m_totals).mid(1) + '\n');
}

void Report::Flush()
{
    m_out.Flush();
}
