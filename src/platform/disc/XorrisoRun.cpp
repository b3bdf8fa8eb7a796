#include "platform/disc/XorrisoRun.h"

#include "platform/process/child_process.h"

#include <QFile>
#include <QRegularExpression>

#include <array>

using namespace Qt::StringLiterals;

namespace {

const QString Name = u"xorriso"_s;

/// Closing a medium is reported each second; a drive that says nothing for so long won't come back.
constexpr int LongestSilenceMs = 180000;
/// The list of a disc with some hundred thousand files.
constexpr qsizetype ResultBytes = qsizetype(16) << 20;
/// What it knows of the files is in it; a piece of the disc that it keeps in hand has a few megabytes.
constexpr qint64 MemoryBytes = qint64(1) << 30;

const QStringList& FirstCommands()
{
    static const QStringList commands{
        u"-no_rc"_s,          u"-abort_on"_s, u"FAILURE"_s,       u"-return_with"_s, u"SORRY"_s,     u"32"_s,
        u"-charset"_s,        u"UTF-8"_s,     u"-md5"_s,          u"on"_s,           u"-pacifier"_s, u"interval=0.1"_s,
        u"-iso_rr_pattern"_s, u"off"_s,       u"-disk_pattern"_s, u"off"_s};
    return commands;
}

} // namespace

QString XorrisoRun::Program()
{
    return ProgramPath(u"xorriso"_s);
}

XorrisoRun::XorrisoRun(const QStringList& commands, const Limits& limits) : m_process(new QProcess)
{
    PrepareChild(*m_process, MemoryBytes);
    m_process->setProgram(Program());
    m_process->setArguments(FirstCommands() + commands + QStringList{u"-end"_s});
    m_silence.setInterval(LongestSilenceMs);
    connect(&m_silence, &QTimer::timeout, this, [this] { GiveUp(u"CD드라이브가 응답하지 않습니다.!!"_s); });
    m_total.setInterval(limits.totalMs);
    connect(&m_total, &QTimer::timeout, this, [this] { GiveUp(QString::fromUtf16(EndlessChildText).arg(Name)); });
    for (QTimer* timer : {&m_silence, &m_total})
        timer->setSingleShot(true);
    TakeOutput(
        *m_process, this, limits.outputBytes,
        [this](QProcess::ProcessChannel channel, const QByteArray& more) { TakePrinted(channel, more); },
        [this] { GiveUp(QString::fromUtf16(BabblingChildText).arg(Name)); });
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        GiveUp(u"xorriso를 실행할 수 없습니다.!!\n(%1)"_s.arg(m_process->errorString()));
    });
    connect(m_process, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
        TakePrinted(QProcess::StandardError, "\n"); // A line that it couldn't end any more.
        m_results = LinesOf(m_resultBytes);
        if (status != QProcess::NormalExit && m_ownFault.isEmpty())
            m_ownFault = u"xorriso가 도중에 끝났습니다.!!"_s;
        End(status == QProcess::NormalExit && code == 0);
    });
}

XorrisoRun::~XorrisoRun()
{
    m_process->disconnect(this);
    if (m_process->state() == QProcess::NotRunning) {
        delete m_process;
        return;
    }
    // Deleting a running one would wait for it, and a drive in trouble can hold it for long.
    connect(m_process, &QProcess::finished, m_process, &QObject::deleteLater);
    KillChild(*m_process);
}

void XorrisoRun::Start()
{
    m_silence.start();
    m_total.start();
    m_process->start();
}

void XorrisoRun::Kill()
{
    KillChild(*m_process);
}

QString XorrisoRun::Reason() const
{
    return m_ownFault.isEmpty() ? KoreanReason(m_faults.All()) : m_ownFault;
}

QString XorrisoRun::Told(const QString& label) const
{
    for (const QStringList& lines : {m_notes.All(), m_results}) {
        for (const QString& line : lines) {
            const qsizetype colon = line.indexOf(u':');
            if (colon > 0 && line.left(colon).trimmed() == label)
                return line.mid(colon + 1).trimmed();
        }
    }
    return {};
}

qint64 XorrisoRun::ReadBytes() const
{
    QFile account(u"/proc/%1/io"_s.arg(m_process->processId()));
    if (!account.open(QIODevice::ReadOnly))
        return 0;
    return account.readLine().mid(qsizetype(qstrlen("rchar: "))).trimmed().toLongLong();
}

void XorrisoRun::TakePrinted(QProcess::ProcessChannel channel, const QByteArray& more)
{
    m_silence.start();
    if (channel == QProcess::StandardError) {
        for (const QString& line : m_noteLines.Take(more))
            TakeNote(line);
        return;
    }
    m_resultBytes += more;
    if (m_resultBytes.size() > ResultBytes)
        GiveUp(QString::fromUtf16(BabblingChildText).arg(Name));
}

void XorrisoRun::TakeNote(const QString& line)
{
    static const QRegularExpression progress(uR"(Writing:\s+(\d+)s\s+([\d.]+)%)"_s);
    static const QRegularExpression fault(uR"(^\w+ ?: (SORRY|MISHAP|FAILURE|FATAL|ABORT) : )"_s);
    if (const QRegularExpressionMatch match = progress.match(line); match.hasMatch()) {
        Q_EMIT Written(match.captured(1).toLongLong() * SectorBytes, match.captured(2).toDouble() / 100);
        return;
    }
    if (line.contains(u"patient"_s) || line.contains(u"Closing"_s))
        Q_EMIT Closing();
    if (line.contains(fault))
        m_faults << line;
    if (!line.contains(u" UPDATE : "_s))
        m_notes << line;
}

void XorrisoRun::GiveUp(const QString& fault)
{
    if (m_ended)
        return;
    m_ownFault = fault;
    KillChild(*m_process);
    End(false);
}

void XorrisoRun::End(bool succeeded)
{
    if (m_ended)
        return;
    m_ended = true;
    m_silence.stop();
    m_total.stop();
    m_succeeded = succeeded;
    Q_EMIT Ended();
}

namespace {

constexpr qsizetype LongestLine = 200;

struct Reason
{
    const char16_t* pattern; ///< In what xorriso, libburn, libisofs, the drive or the system say.
    const char16_t* text;
};

/// The more telling come first: the others often only follow from them.
constexpr std::array<Reason, 13> Reasons{{
    {u"busy|in use|fcntl-lock", u"다른 프로그램이 CD드라이브를 사용하고 있습니다.!!"},
    {u"no (suitable |recognizable |writeable )?medi(a|um)\\b|medium not present|no content detected", NoDiscText},
    {u"closed media|not blank|closed or not recordable|not appendable|erasable|need blank", NotBlankText},
    {u"exceeds free space|permissible write addresses|out of range|end of user area|track size unpredictable",
     u"CD의 남은 공간이 부족합니다.!!"},
    {u"no space left|quota|file too large", u"이미지를 저장할 디스크의 남은 공간이 부족합니다.!!"},
    {u"permission denied|not permitted|read-only", u"CD드라이브나 파일을 쓸 권한이 없습니다.!!"},
    {u"mismatch", u"CD에 쓴 내용이 원본과 다릅니다.!!"},
    {u"unsuitable|incompatible|cannot recognize|not recognizable|suitable write mode|cannot set write type",
     UnsuitableText},
    {u"not found|cannot access|cannot acquire|no such|nor its directory|failed to open device|not ready",
     u"CD드라이브를 열 수 없습니다.!!"},
    {u"power calibration|scsi error on write|write error|medium error|blanking failed|failure with writing|cannot "
     u"write",
     u"CD에 쓰는 중에 오류가 났습니다.!! 다른 CD에 다시 저장하십시오."},
    {u"read error|scsi error on read|cannot read|cannot open source|cannot determine attributes|input/output error",
     u"CD나 저장할 파일을 읽지 못했습니다.!!"},
    {u"memory", u"메모리가 부족합니다.!!"},
    {u"name.*(too long|collision|truncat)|charset|conver", u"CD에 쓸 수 없는 파일 이름이 있습니다.!!"},
}};

QString Behind(const QString& sentence, const QString& line)
{
    const QString shown = line.size() > LongestLine ? line.left(LongestLine) + u"..."_s : line;
    return u"%1\n(%2)"_s.arg(sentence, shown);
}

} // namespace

QString KoreanReason(const QStringList& faults)
{
    if (faults.isEmpty())
        return u"xorriso가 까닭을 알리지 않고 끝났습니다.!!"_s;
    // The name of a file is no reason.
    static const QRegularExpression quoted(u"'[^']*'"_s);
    for (const Reason& reason : Reasons) {
        const QRegularExpression pattern(QString::fromUtf16(reason.pattern), QRegularExpression::CaseInsensitiveOption);
        for (const QString& line : faults) {
            if (QString(line).remove(quoted).contains(pattern))
                return Behind(QString::fromUtf16(reason.text), line);
        }
    }
    return Behind(u"xorriso가 오류를 알렸습니다.!!"_s, faults.first());
}
