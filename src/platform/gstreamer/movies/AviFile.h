#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

/// A movie file while it grows: Motion-JPEG pictures and 16-bit sound at 44.1 kHz, one chunk of each for every frame.
/// It has a partial name until it is whole. All faults are PlatformErrors. Used on one thread at a time.
///
/// Every part of a gigabyte has an index of its own, so that files of any length stay readable.
class AviFile
{
public:
    struct Format
    {
        int width = 320;
        int height = 240;
        int framesPerSecond = 18;
        bool sound = true;
        qint64 partBytes = qint64(1) << 30;
    };

    static constexpr int SampleRate = 44100;

    /// Makes the file, for this user alone, under its partial name; an old partial file of this process goes.
    AviFile(const QString& nativePath, const Format& format);
    /// A file that isn't complete keeps its partial name.
    ~AviFile();
    AviFile(const AviFile&) = delete;
    AviFile& operator=(const AviFile&) = delete;

    /// One frame, and the sound that belongs to it. On a fault the file is as before.
    void Append(const QByteArray& jpeg, const QByteArray& samples);
    /// Takes frames off the end, to make room for the index on a full disk.
    void DropTail(int frames);
    /// Writes counts and index, and gives the file its own name, or, where that is taken, the next number's; a file
    /// without frames vanishes. Can be tried again after a fault.
    void Complete();

    int Frames() const { return m_frames; }

    /// Completes what a killed process left; frames that it had written are kept.
    static void Repair(const QString& partialPath, const QString& nativePath);

    /// Partial name of a movie file, and whose it is.
    struct Partial
    {
        QString name; ///< Of the whole movie; empty when it is no partial file of this machine.
        bool isAbandoned = false;
    };
    static Partial ReadPartialName(const QString& fileName);

private:
    struct Chunk
    {
        qint64 at;
        quint32 size;
        bool isSound;
    };
    struct IndexPlace
    {
        qint64 at;
        quint32 size;
        quint32 duration;
    };

    AviFile(const QString& partialPath, const QString& nativePath);

    void Open(int flags);
    void Write(qint64 at, const QByteArray& bytes);
    QByteArray Header() const;
    QByteArray StreamHeader(bool isSound) const;
    qint64 HeaderSize() const;
    qint64 MoviAt() const;
    void BeginPart();
    void ClosePart();
    QByteArray PartIndex(bool isSound) const;
    void ReadFormat();
    void ScanChunks();
    void Sync();

    QString m_path;
    QString m_partial;
    Format m_format;
    int m_fd = -1;
    qint64 m_end = 0; ///< Of what is written whole.
    qint64 m_riffAt = 0;
    bool m_isPartClosed = false;
    int m_frames = 0;
    int m_framesOfFirstPart = 0;
    qint64 m_soundBytes = 0;
    quint32 m_largest = 0;
    std::vector<Chunk> m_chunks; ///< Of the present part.
    std::vector<IndexPlace> m_indexes[2];
};
