#pragma once

#include <QFile>
#include <QtEndian>

/// Reads an AVI file back as a strict player would: by its indexes, with all sizes and counts looked at.
class MovieReader
{
public:
    QString fault; ///< Empty for a file whose sizes, counts and indexes agree.
    QList<QByteArray> frames;
    QByteArray sound;
    int parts = 0;

    explicit MovieReader(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            Fault("can't be opened");
            return;
        }
        m_bytes = file.readAll();
        ReadParts();
        ReadIndexes();
    }

private:
    void Fault(const char* text)
    {
        if (fault.isEmpty())
            fault = QString::fromLatin1(text);
    }
    template <class T>
    T At(qint64 at)
    {
        if (at < 0 || at + qint64(sizeof(T)) > m_bytes.size()) {
            Fault("reads beyond the end");
            return 0;
        }
        return qFromLittleEndian<T>(m_bytes.constData() + at);
    }
    QByteArray Id(qint64 at) const { return m_bytes.mid(at, 4); }

    void ReadParts()
    {
        qint64 at = 0;
        while (at < m_bytes.size() && fault.isEmpty()) {
            if (Id(at) != "RIFF" || Id(at + 8) != (parts == 0 ? "AVI " : "AVIX"))
                Fault("no part begins here");
            at += 8 + At<quint32>(at + 4);
            ++parts;
        }
        if (at != m_bytes.size())
            Fault("the last part ends elsewhere");
    }

    void ReadIndexes()
    {
        for (qint64 at = m_bytes.indexOf("indx"); at > 0 && fault.isEmpty(); at = m_bytes.indexOf("indx", at + 4)) {
            const QByteArray stream = Id(at + 16);
            if (stream != "00dc" && stream != "01wb")
                continue;
            const auto count = At<quint32>(at + 12);
            quint32 total = 0;
            for (quint32 i = 0; i < count; ++i) {
                const qint64 entry = at + 32 + 16 * i;
                total += ReadIndex(qint64(At<quint64>(entry)), stream) / (stream == "01wb" ? 2 : 1);
            }
            // The length that the stream's header tells.
            const qint64 strh = m_bytes.lastIndexOf("strh", at);
            if (At<quint32>(strh + 8 + 32) != total)
                Fault("the count is another");
            if (stream == "00dc" && At<quint32>(m_bytes.indexOf("dmlh") + 8) != total)
                Fault("the count of all parts is another");
        }
        const qint64 idx1 = m_bytes.indexOf("idx1");
        const qint64 movi = m_bytes.indexOf("movi");
        if (idx1 < 0)
            return Fault("no index");
        quint32 pictures = 0;
        for (quint32 i = 0; i < At<quint32>(idx1 + 4) / 16; ++i) {
            const qint64 entry = idx1 + 8 + 16 * i;
            if (Id(movi + At<quint32>(entry + 8)) != Id(entry))
                Fault("the old index points elsewhere");
            pictures += Id(entry) == "00dc" ? 1 : 0;
        }
        if (At<quint32>(48) != pictures)
            Fault("the count of the first part is another");
    }

    /// Gives frames or bytes.
    quint32 ReadIndex(qint64 at, const QByteArray& stream)
    {
        if (Id(at) != (stream == "00dc" ? "ix00" : "ix01") || Id(at + 16) != stream)
            Fault("no index where one should be");
        const auto base = qint64(At<quint64>(at + 20));
        quint32 total = 0;
        for (quint32 i = 0; i < At<quint32>(at + 12) && fault.isEmpty(); ++i) {
            const qint64 entry = at + 32 + 8 * i;
            const qint64 data = base + At<quint32>(entry);
            const auto size = At<quint32>(entry + 4);
            if (Id(data - 8) != stream || At<quint32>(data - 4) != size)
                Fault("the index points elsewhere");
            if (stream == "00dc")
                frames.append(m_bytes.mid(data, size));
            else
                sound.append(m_bytes.mid(data, size));
            total += stream == "00dc" ? 1 : size;
        }
        return total;
    }

    QByteArray m_bytes;
};
