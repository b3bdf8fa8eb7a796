#include "frame/journal.h"

#include "contracts/PlatformError.h"

#include "contracts/files.h"
#include "frame/components.h"

#include <QRegularExpression>

#include <mutex>

using namespace Qt::StringLiterals;

namespace {

/// A line is read by people: what is longer isn't.
constexpr qsizetype LongestLine = 300;
/// What a message of a fault has, and no other.
constexpr char16_t FaultMark[] = u".!!";

std::mutex contextMutex;
QString contextChart;
QString contextRoot;

QString OneLine(QString text)
{
    text.replace(QRegularExpression(uR"([\p{C}\s]+)"_s), u" "_s);
    text = text.trimmed();
    return text.size() > LongestLine ? text.left(LongestLine) + u'…' : text;
}

/// The file that an operator chose may be called after the patient.
QString WithoutForeignPaths(const QString& text, const QString& captureRoot)
{
    static const QRegularExpression path(uR"((?<![\w/])/[^():\n]+)"_s, QRegularExpression::UseUnicodePropertiesOption);
    QString kept;
    qsizetype end = 0;
    for (const QRegularExpressionMatch& match : path.globalMatch(text)) {
        const QString found = match.captured();
        const bool isOurs = found.startsWith(u"/dev/"_s) || found.startsWith(u"/etc/capture-station"_s) ||
                            (!captureRoot.isEmpty() && found.startsWith(NativePath(captureRoot)));
        kept += text.sliced(end, match.capturedStart() - end);
        kept += isOurs ? found : u"…"_s;
        end = match.capturedEnd();
    }
    return kept + text.sliced(end);
}

QString CaptureRoot()
{
    const std::lock_guard lock(contextMutex);
    return contextRoot;
}

} // namespace

void journal::setContext(const QString& chart, const QString& captureRoot)
{
    const std::lock_guard lock(contextMutex);
    contextChart = chart.trimmed();
    contextRoot = captureRoot;
}

void journal::NoteFault(const QString& text)
{
    if (ServiceSlot<Journal>() == nullptr)
        qWarning("%s", qUtf8Printable(text));
    else
        Note(Journal::Warning, Reduced(text, CaptureRoot()));
}

void journal::Note(Journal::Severity severity, const QString& what)
{
    if (ServiceSlot<Journal>() == nullptr)
        return;
    QString chart;
    {
        const std::lock_guard lock(contextMutex);
        chart = contextChart;
    }
    const QString line = OneLine(what);
    UseService<Journal>().Write(severity, chart.isEmpty() ? line : u"%1 (차트 %2)"_s.arg(line, OneLine(chart)));
}

void journal::NoteShown(const QString& message)
{
    if (!message.contains(QStringView(FaultMark)))
        return;
    Note(Journal::Error, Reduced(message, CaptureRoot()));
}

QString journal::Reduced(const QString& message, const QString& captureRoot)
{
    static const QRegularExpression number(uR"(\[(\d+)\]\s*$)"_s);
    const qsizetype end = message.indexOf(QRegularExpression(uR"([\r\n])"_s));
    const QString first = WithoutForeignPaths(end < 0 ? message : message.left(end), captureRoot);
    const QRegularExpressionMatch match = number.match(message);
    return match.hasMatch() && end >= 0 ? u"%1 [%2]"_s.arg(first, match.captured(1)) : first;
}

bool journal::NotingFaults(const std::function<void()>& step)
{
    try {
        step();
        return true;
    } catch (const PlatformError& error) {
        NoteFault(error.Text());
        return false;
    }
}
