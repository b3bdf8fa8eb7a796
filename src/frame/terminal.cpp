#include "frame/terminal.h"

#include <QStringList>

#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

bool IsLineEndOrTab(char32_t point)
{
    return (point >= U'\t' && point <= U'\r') || point == 0x85 || point == 0x2028 || point == 0x2029;
}

bool IsShown(char32_t point)
{
    switch (QChar::category(point)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
        return false;
    default:
        return true;
    }
}

} // namespace

QString TerminalText(const QString& text)
{
    QString shown;
    shown.reserve(text.size());
    bool wasLineEnd = false;
    for (const char32_t point : text.toStdU32String()) {
        const bool isLineEnd = IsLineEndOrTab(point);
        if (isLineEnd && !wasLineEnd)
            shown += u' ';
        else if (!isLineEnd)
            shown += IsShown(point) ? QString::fromUcs4(&point, 1) : QString(QChar::ReplacementCharacter);
        wasLineEnd = isLineEnd;
    }
    return shown;
}

TerminalOutput& TerminalOutput::operator<<(const QString& piece)
{
    const bool endsLine = piece.endsWith(u'\n');
    Put(TerminalText(piece.chopped(endsLine ? 1 : 0)) + (endsLine ? u"\n"_s : QString()));
    return *this;
}

void TerminalOutput::PutLines(const QString& lines)
{
    for (const QString& line : lines.split(u'\n'))
        *this << line << u'\n';
}

void TerminalOutput::Overwrite(const QString& text)
{
    Put(u'\r' + TerminalText(text));
}

void TerminalOutput::Put(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<size_t>(bytes.size());
    Note(std::fwrite(bytes.constData(), 1, size, m_file) == size);
}

void TerminalOutput::PutJson(const QByteArray& json)
{
    QString shown;
    shown.reserve(json.size());
    for (const char32_t point : QString::fromUtf8(json).toStdU32String()) {
        const QString letter = QString::fromUcs4(&point, 1);
        if (point == U'\n' || (IsShown(point) && !IsLineEndOrTab(point))) {
            shown += letter;
            continue;
        }
        for (const QChar unit : letter)
            shown += u"\\u%1"_s.arg(unit.unicode(), 4, 16, QChar(u'0'));
    }
    Put(shown);
}

void TerminalOutput::Flush()
{
    Note(std::fflush(m_file) == 0);
}

QString TerminalOutput::Close()
{
    Note(std::fclose(m_file) == 0);
    return m_error == 0 ? QString() : QString::fromLocal8Bit(std::strerror(m_error));
}

void TerminalOutput::Note(bool isDone)
{
    if (!isDone && m_error == 0)
        m_error = errno != 0 ? errno : EIO;
}

void TellOnError(const QString& text)
{
    QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    if (lines.isEmpty())
        lines << QString();
    for (QString& line : lines)
        line = TerminalText(line.endsWith(u'\r') ? line.chopped(1) : line);
    TerminalOutput(stderr).PutLines(lines.join(u"\n  "_s));
}
