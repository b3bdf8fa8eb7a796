#include "frame/terminal.h"

#include <QStringList>

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
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), m_file);
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
