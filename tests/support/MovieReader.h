#pragma once

#include <QProcess>

/// A movie as a program that doesn't know its writer reads it, through its indexes.
class MovieReader
{
public:
    QString fault; ///< What that program complains about; empty for a whole movie.
    QList<QByteArray> frames;
    QByteArray sound;

    explicit MovieReader(const QString& path)
    {
        const QByteArray pictures = Run("ffmpeg -v repeat+error -nostdin -i %1 -map 0:v -c copy -f data -", path);
        sound = Run("ffmpeg -v repeat+error -nostdin -i %1 -map 0:a -c copy -f data -", path);
        const QByteArray sizes =
            Run("ffprobe -v repeat+error -select_streams v -show_entries packet=size -of csv=p=0 %1", path);
        qsizetype at = 0;
        for (const QByteArray& size : sizes.split('\n').mid(0, sizes.count('\n'))) {
            frames.append(pictures.mid(at, size.toLongLong()));
            at += size.toLongLong();
        }
        if (at != pictures.size())
            fault += QStringLiteral("the sizes are others");
    }

private:
    QByteArray Run(const char* command, const QString& path)
    {
        QStringList words = QString::fromLatin1(command).split(QChar(u' '));
        words.replaceInStrings(QStringLiteral("%1"), path);
        QProcess process;
        process.start(words.takeFirst(), words);
        if (!process.waitForFinished(60000))
            fault += QStringLiteral("no answer");
        for (const QByteArray& line : process.readAllStandardError().split('\n'))
            fault += line.startsWith("[mjpeg") ? QString() : QString::fromUtf8(line); // Not about the file.
        return process.readAllStandardOutput();
    }
};
