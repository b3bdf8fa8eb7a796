#pragma once

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

/// Picture files of every format that the station imports, made by the programs of the system that write them. All show
/// the same: the left upper quarter red on blue, or black on white where there are no colours.
class PictureFiles
{
public:
    static constexpr QSize Size{320, 240};

    PictureFiles()
    {
        QImage colours(Size, QImage::Format_RGB32);
        colours.fill(QColor(20, 40, 200));
        QPainter(&colours).fillRect(0, 0, Size.width() / 2, Size.height() / 2, QColor(220, 20, 20));
        QImage lines(Size, QImage::Format_RGB32);
        lines.fill(Qt::white);
        QPainter(&lines).fillRect(0, 0, Size.width() / 2, Size.height() / 2, Qt::black);
        if (!colours.save(Path(QStringLiteral("colours.png"))) || !lines.save(Path(QStringLiteral("lines.png"))))
            qFatal("no picture files");
    }

    /// A picture file of one grey, or of black alone, cheap to make in any size.
    static QByteArray Blank(QSize size, const char* format)
    {
        const bool jpeg = QByteArray(format) == "jpeg";
        QImage blank(size, jpeg ? QImage::Format_Grayscale8 : QImage::Format_Mono);
        blank.fill(jpeg ? 90 : 0);
        QByteArray content;
        QBuffer buffer(&content);
        if (!blank.save(&buffer, format))
            qFatal("no picture file");
        return content;
    }

    /// Names another size in the frame header of a JPEG than the one that its data have.
    static QByteArray Promising(QByteArray jpeg, quint16 width, quint16 height)
    {
        for (int at = 2; at + 9 < jpeg.size();) {
            const auto marker = uchar(jpeg[at + 1]);
            if (marker == 0xC0 || marker == 0xC2) {
                const char size[] = {char(height >> 8), char(height), char(width >> 8), char(width)};
                return jpeg.replace(at + 5, 4, size, 4);
            }
            at += 2 + (uchar(jpeg[at + 2]) << 8) + uchar(jpeg[at + 3]);
        }
        return jpeg;
    }

    QString Path(const QString& name) const { return m_folder.filePath(name); }

    /// Runs a program in the folder and gives the content of the file that it was to write.
    QByteArray Made(const QString& command, const QString& output) const
    {
        QProcess process;
        process.setWorkingDirectory(m_folder.path());
        process.startCommand(command);
        process.waitForFinished();
        const QByteArray content = Content(output);
        if (process.exitCode() != 0 || content.isEmpty())
            qFatal("%s: %s", qPrintable(command), process.readAllStandardError().constData());
        return content;
    }

    /// Options of convert for a one-bit picture in facsimile bits or PCX: its seventh version writes black for white
    /// there.
    static QString OneBit()
    {
        static const bool changesPlaces = [] {
            QProcess process;
            process.start(QStringLiteral("convert"), {QStringLiteral("-version")});
            process.waitForFinished();
            return process.readAllStandardOutput().contains("ImageMagick 7");
        }();
        return changesPlaces ? QStringLiteral("-monochrome -negate") : QStringLiteral("-monochrome");
    }

    /// A JBIG2 file of one page around facsimile bits, which no program of the system writes.
    QByteArray Jbig2(quint32 width, quint32 height) const
    {
        const QByteArray bits =
            Made(QStringLiteral("convert lines.png %1 GROUP4:lines.g4").arg(OneBit()), QStringLiteral("lines.g4"));
        const auto number = [](quint32 value) {
            const quint32 big = qToBigEndian(value);
            return QByteArray(reinterpret_cast<const char*>(&big), 4);
        };
        const auto segment = [&](quint32 index, char type, const QByteArray& data) {
            return number(index) + type + QByteArray("\0\1", 2) + number(quint32(data.size())) + data;
        };
        const QByteArray size = number(width) + number(height);
        return QByteArray("\x97JB2\r\n\x1A\n\1", 9) + number(1) +
               segment(0, 48, size + number(0) + number(0) + QByteArray("\0\0\0", 3)) +
               segment(1, 38, size + number(0) + number(0) + QByteArray("\0\1", 2) + bits) + segment(2, 49, {}) +
               segment(3, 51, {});
    }

    /// Puts content under a name into the folder and gives its path.
    QString Put(const QByteArray& content, const QString& name) const
    {
        QFile file(Path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no picture file");
        return file.fileName();
    }

private:
    QByteArray Content(const QString& name) const
    {
        QFile file(Path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;
};
