#include "platform/journal/StandardErrorJournal.h"

#include "frame/components.h"
#include "frame/journal.h"
#include "frame/terminal.h"

#include <QCoreApplication>
#include <QDateTime>

#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr size_t MostWaiting = 500;
constexpr int LastPatienceMs = 300;

QString Word(Journal::Severity severity)
{
    switch (severity) {
    case Journal::Information:
        return u"정보"_s;
    case Journal::Warning:
        return u"주의"_s;
    case Journal::Error:
        break;
    }
    return u"오류"_s;
}

QByteArray Formatted(Journal::Severity severity, const QString& line)
{
    const QDateTime now = QDateTime::currentDateTime();
    return u"%1 capture-station[%2] %3: %4\n"_s.arg(now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODate))
        .arg(QCoreApplication::applicationPid())
        .arg(Word(severity), TerminalText(line))
        .toUtf8();
}

void Put(const QByteArray& line)
{
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
    std::fflush(stderr);
}

void TakeMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    // Its second line may quote what it is about.
    const QString line = journal::Reduced(message, {});
    if (type == QtFatalMsg)
        TellOnError(u"capture-station: "_s + message); // The program ends behind it.
    else
        journal::Note(type == QtDebugMsg || type == QtInfoMsg ? Journal::Information : Journal::Warning, line);
}

} // namespace

void StandardErrorJournal::PutAll(Lines& lines)
{
    for (;;) {
        QByteArray text;
        {
            const std::lock_guard lock(lines.mutex);
            if (lines.waiting.empty())
                return;
            text = lines.waiting.front();
            lines.waiting.pop_front();
            if (lines.dropped > 0)
                text += Formatted(Warning, u"%1줄을 적지 못하였습니다."_s.arg(std::exchange(lines.dropped, 0)));
        }
        Put(text);
    }
}

void StandardErrorJournal::Write(Severity severity, const QString& line)
{
    {
        const std::lock_guard lock(m_lines->mutex);
        if (m_lines->waiting.size() >= MostWaiting) {
            ++m_lines->dropped;
            return;
        }
        m_lines->waiting.push_back(Formatted(severity, line));
    }
    m_thread.Post([lines = m_lines] { PutAll(*lines); });
}

void StandardErrorJournal::End()
{
    m_thread.End(LastPatienceMs, [lines = m_lines] { PutAll(*lines); });
}

void RegisterJournal()
{
    std::signal(SIGPIPE, SIG_IGN);
    InstallService<Journal>(std::make_unique<StandardErrorJournal>());
    qInstallMessageHandler(&TakeMessage);
}

void EndJournal()
{
    // It stays: other threads may be about to write.
    static_cast<StandardErrorJournal&>(UseService<Journal>()).End();
}
