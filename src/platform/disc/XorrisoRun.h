#pragma once

#include "platform/process/output_lines.h"

#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

/// What a disc is written in, and xorriso counts in.
inline constexpr qint64 SectorBytes = 2048;

/// The program xorriso at one piece of work, as a child process that ends with this process. Its output is read line by
/// line, and a program that prints or runs without end is ended; names are UTF-8 whatever the locale of the station.
class XorrisoRun : public QObject
{
    Q_OBJECT

public:
    /// Path of the program; empty when it isn't installed.
    static QString Program();

    struct Limits
    {
        int totalMs;        ///< From start to end.
        qint64 outputBytes; ///< That the program prints.
    };
    /// More than a disc of two layers takes at its lowest speed, with each sector read back; six hours of progress at
    /// ten lines a second are half of the output.
    static constexpr Limits Writing{6 * 3600 * 1000, qint64(64) << 20};
    /// A run that only looks at the medium.
    static constexpr Limits Look{180'000, qint64(1) << 20};

    /// `commands` follow those that every run begins with.
    explicit XorrisoRun(const QStringList& commands, const Limits& limits = Writing);
    /// Ends the child without waiting for a drive that doesn't answer.
    ~XorrisoRun() override;

    void Start();
    void Kill();

    /// True when the program ended by itself and told of nothing that went wrong.
    bool Succeeded() const { return m_succeeded; }
    /// What went wrong, for the operator.
    QString Reason() const;
    /// Lines of the result channel.
    const QStringList& Results() const { return m_results; }
    /// Value of a line such as "Media status : is blank", of either channel; empty when there was none.
    QString Told(const QString& label) const;
    /// Bytes that the child has read so far, those of a device not counted.
    qint64 ReadBytes() const;

    bool HasEnded() const { return m_ended; }

Q_SIGNALS:
    /// Bytes written, and the share of the whole from 0 to 1.
    void Written(qint64 bytes, double share);
    /// The medium is being closed, which has no measure.
    void Closing();
    void Ended();

private:
    void TakePrinted(QProcess::ProcessChannel channel, const QByteArray& more);
    void TakeNote(const QString& line);
    void GiveUp(const QString& fault);
    void End(bool succeeded);

    QProcess* m_process;
    QTimer m_silence;
    QTimer m_total;
    LineSplitter m_noteLines;
    KeptLines m_notes;
    KeptLines m_faults; ///< What the program told of what went wrong, in its own words.
    QString m_ownFault; ///< What went wrong with the program itself.
    QByteArray m_resultBytes;
    QStringList m_results;
    bool m_succeeded = false;
    bool m_ended = false;
};

/// Of a medium that can't be written to.
inline constexpr char16_t NoDiscText[] = u"CD드라이브에 CD가 없습니다.!! 빈 CD를 넣어 주십시오.";
inline constexpr char16_t NotBlankText[] = u"빈 CD가 아닙니다.!! 빈 CD를 넣어 주십시오.";
inline constexpr char16_t UnsuitableText[] = u"이 CD에는 쓸 수 없습니다.!! 다른 CD를 넣어 주십시오.";

/// What went wrong, for the operator: a Korean sentence for the most telling of the lines in which xorriso reports
/// faults, and that line, shortened, behind it.
QString KoreanReason(const QStringList& faults);
