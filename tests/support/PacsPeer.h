#pragma once

#include "support/testing.h"

/// A server for pictures that fails in the ways that a test wants: the program pacs_peer, whose source tells its
/// options. It keeps its port and its record when it is started again.
class PacsPeer
{
public:
    struct Stored
    {
        QString uid; ///< SOP instance UID.
        int number = 0;
        QString patientId;
        QString status; ///< Hex, four digits.
    };

    ~PacsPeer() { Stop(); }

    int Port() const { return m_port; }

    /// Option and value in turn.
    void Start(const QStringList& options = {})
    {
        Stop();
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(PACS_PEER), QStringList{QString::number(m_port), RecordPath()} + options);
        if (!m_process.waitForReadyRead(10000))
            qFatal("pacs_peer didn't start");
        m_port = m_process.readLine().trimmed().toInt();
    }
    void Stop()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// Each object that has come whole, in the order in which they came.
    QList<Stored> Objects() const
    {
        QList<Stored> objects;
        QFile record(RecordPath());
        if (record.open(QIODevice::ReadOnly)) {
            for (QString line; !(line = QString::fromUtf8(record.readLine()).trimmed()).isEmpty();) {
                const QStringList fields = line.split(u'\t');
                objects.append({fields.value(0), fields.value(1).toInt(), fields.value(2), fields.value(3)});
            }
        }
        return objects;
    }

    /// What it was told of steps and commitment, line by line with the fields that pacs_peer names.
    QList<QStringList> Told() const
    {
        QList<QStringList> lines;
        QFile record(RecordPath() + QStringLiteral(".told"));
        if (record.open(QIODevice::ReadOnly)) {
            for (QString line; !(line = QString::fromUtf8(record.readLine())).isEmpty();)
                lines.append(line.chopped(1).split(u'\t'));
        }
        return lines;
    }

private:
    QString RecordPath() const { return m_folder.filePath(QStringLiteral("record")); }

    QTemporaryDir m_folder;
    QProcess m_process;
    int m_port = 0;
};
