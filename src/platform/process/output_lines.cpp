#include "platform/process/output_lines.h"

QStringList LineSplitter::Take(const QByteArray& more)
{
    QStringList lines;
    qsizetype begin = 0;
    const auto addUpTo = [&](qsizetype end) {
        const qsizetype room = LongestLine - m_begun.size();
        m_begun.append(more.constData() + begin, qMin(end - begin, room));
        begin = end + 1;
    };
    for (qsizetype end = more.indexOf('\n'); end >= 0; end = more.indexOf('\n', begin)) {
        addUpTo(end);
        lines << QString::fromUtf8(m_begun).trimmed();
        m_begun.clear();
    }
    addUpTo(more.size());
    return lines;
}

KeptLines& KeptLines::operator<<(const QString& line)
{
    if (m_last.isEmpty() && m_first.size() < MostLines && m_firstText + line.size() <= MostText) {
        m_first << line;
        m_firstText += line.size();
        return *this;
    }
    m_last << line;
    m_lastText += line.size();
    while (m_last.size() > 1 && (m_last.size() > MostLines || m_lastText > MostText))
        m_lastText -= m_last.takeFirst().size();
    return *this;
}
