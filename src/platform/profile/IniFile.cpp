#include "platform/profile/IniFile.h"

#include "platform/profile/windows949.h"

#include <QSet>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {
bool Same(const QString& one, const QString& other)
{
    return one.compare(other, Qt::CaseInsensitive) == 0;
}

QByteArray WithoutQuotes(const QByteArray& value)
{
    const bool quoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.front() == value.back();
    return quoted ? value.sliced(1, value.size() - 2) : value;
}
} // namespace

// The bytes of '[', ']', '=' and ';' never stand inside a character of either encoding.

IniFile::IniFile(const QByteArray& content, Encoding encoding) : m_encoding(encoding)
{
    QByteArray rest = content;
    if (rest.startsWith("\xEF\xBB\xBF")) {
        m_byteOrderMark = rest.first(3);
        rest.remove(0, 3);
    }
    if (rest.contains('\n') && !rest.contains("\r\n"))
        m_lineEnd = "\n";
    if (rest.isEmpty())
        return;
    QList<QByteArray> lines = rest.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    for (QByteArray& line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
        m_lines.append(Parsed(line));
    }
    FindSections();
}

IniFile::Encoding IniFile::EncodingOf(const QByteArray& content)
{
    QStringDecoder decoder(QStringConverter::Utf8);
    // The line end closes a character that the end of the text has cut, so that it counts as an error.
    const QString text = decoder(content + '\n');
    return decoder.hasError() ? Encoding::Windows949 : Encoding::Utf8;
}

std::optional<QString> IniFile::Value(const QString& section, const QString& key) const
{
    const qsizetype at = Find(section, key);
    if (at < 0)
        return std::nullopt;
    const QByteArray& text = m_lines.at(at).text;
    return Decoded(WithoutQuotes(text.sliced(text.indexOf('=') + 1).trimmed()));
}

QStringList IniFile::Sections() const
{
    QStringList names;
    for (qsizetype at = 0; at < m_lines.size(); ++at) {
        if (m_lines.at(at).isSection && SectionBegin(m_lines.at(at).section) == at + 1)
            names.append(m_lines.at(at).section);
    }
    return names;
}

QStringList IniFile::Keys(const QString& section) const
{
    QStringList keys;
    const qsizetype begin = SectionBegin(section);
    if (begin < 0)
        return keys;
    QSet<QString> seen;
    for (qsizetype at = begin; at < m_lines.size() && !m_lines.at(at).isSection; ++at) {
        const QString& key = m_lines.at(at).key;
        if (key.isEmpty() || seen.contains(key.toCaseFolded()))
            continue;
        seen.insert(key.toCaseFolded());
        keys.append(key);
    }
    return keys;
}

QStringList IniFile::Unread() const
{
    QStringList unread;
    QSet<QString> seen;
    QString section; // In its brackets.
    for (qsizetype at = 0; at < m_lines.size(); ++at) {
        const Line& line = m_lines.at(at);
        const QByteArray shown = line.text.trimmed();
        if (line.isSection) {
            section = u"[%1]"_s.arg(line.section);
            seen.clear();
            if (SectionBegin(line.section) != at + 1)
                unread.append(section);
        } else if (!line.key.isEmpty() && !line.key.startsWith(u'#')) {
            if (section.isEmpty() || seen.contains(line.key.toCaseFolded()))
                unread.append(u"%1 %2"_s.arg(section, line.key).trimmed());
            seen.insert(line.key.toCaseFolded());
        } else if (!shown.isEmpty() && !shown.startsWith(';') && !shown.startsWith('#')) {
            unread.append(Decoded(shown));
        }
    }
    return unread;
}

void IniFile::SetValue(const QString& section, const QString& key, const QString& value)
{
    QByteArray bytes = Encoded(value);
    bytes.replace("\r\n", " ").replace('\r', ' ').replace('\n', ' ');
    if (const qsizetype at = Find(section, key); at >= 0) {
        QByteArray& text = m_lines[at].text;
        text = text.first(text.indexOf('=') + 1) + bytes;
        return;
    }
    qsizetype begin = SectionBegin(section);
    if (begin < 0) {
        m_lines.append(Parsed('[' + Encoded(section) + ']'));
        begin = m_lines.size();
    }
    // Blank lines at a section's end set it off from the next one.
    qsizetype end = SectionEnd(begin);
    while (end > begin && m_lines.at(end - 1).text.trimmed().isEmpty())
        --end;
    m_lines.insert(end, Parsed(Encoded(key) + '=' + bytes));
    FindSections();
}

QByteArray IniFile::Content() const
{
    QByteArray content = m_byteOrderMark;
    for (const Line& line : m_lines)
        content += line.text + m_lineEnd;
    return content;
}

QString IniFile::Decoded(const QByteArray& bytes) const
{
    return m_encoding == Encoding::Utf8 ? QString::fromUtf8(bytes) : windows949::Decoded(bytes);
}

QByteArray IniFile::Encoded(const QString& text) const
{
    return m_encoding == Encoding::Utf8 ? text.toUtf8() : windows949::Encoded(text);
}

IniFile::Line IniFile::Parsed(const QByteArray& text) const
{
    Line line{.text = text, .section = {}, .key = {}};
    const QByteArray shown = text.trimmed();
    if (shown.startsWith('[')) {
        const qsizetype closing = shown.indexOf(']');
        line.isSection = true;
        line.section = Decoded(shown.sliced(1, (closing < 0 ? shown.size() : closing) - 1).trimmed());
    } else if (const qsizetype equals = shown.indexOf('='); equals > 0 && !shown.startsWith(';')) {
        line.key = Decoded(shown.first(equals).trimmed());
    }
    return line;
}

void IniFile::FindSections()
{
    m_begins.clear();
    for (qsizetype at = 0; at < m_lines.size(); ++at) {
        const QString name = m_lines.at(at).section.toCaseFolded();
        if (m_lines.at(at).isSection && !m_begins.contains(name))
            m_begins.insert(name, at + 1);
    }
}

qsizetype IniFile::SectionBegin(const QString& section) const
{
    return m_begins.value(section.toCaseFolded(), -1);
}

qsizetype IniFile::SectionEnd(qsizetype begin) const
{
    qsizetype end = begin;
    while (end < m_lines.size() && !m_lines.at(end).isSection)
        ++end;
    return end;
}

qsizetype IniFile::Find(const QString& section, const QString& key) const
{
    const qsizetype begin = SectionBegin(section);
    if (begin < 0)
        return -1;
    for (qsizetype at = begin; at < m_lines.size() && !m_lines.at(at).isSection; ++at) {
        if (!m_lines.at(at).key.isEmpty() && Same(m_lines.at(at).key, key))
            return at;
    }
    return -1;
}
