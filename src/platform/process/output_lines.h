#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Takes what a program prints apart into lines, as it comes.
class LineSplitter
{
public:
    /// In bytes. The rest of a longer line is left out.
    static constexpr qsizetype LongestLine = qsizetype(64) << 10;

    /// The lines that end in these bytes, without white space around them.
    QStringList Take(const QByteArray& more);

private:
    QByteArray m_begun;
};

/// The first and the last lines of what a program says, however much that is.
class KeptLines
{
public:
    /// At each of the two ends.
    static constexpr qsizetype MostLines = 500;
    /// In characters, at each of the two ends; a single line is always kept.
    static constexpr qsizetype MostText = qsizetype(256) << 10;

    KeptLines& operator<<(const QString& line);
    QStringList All() const { return m_first + m_last; }

private:
    QStringList m_first;
    QStringList m_last;
    qsizetype m_firstText = 0;
    qsizetype m_lastText = 0;
};
