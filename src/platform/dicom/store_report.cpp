#include "platform/dicom/store_report.h"

#include <QRegularExpression>

#include <array>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestLine = 160;

struct Reason
{
    const char16_t* pattern; ///< In what dcmtk says.
    const char16_t* text;
};

/// The more telling come first: the others often only follow from them.
constexpr std::array<Reason, 8> Reasons{{
    {u"Called AE ?Title Not Recognized", u"PACS 서버가 CalledAet을 알지 못합니다.!!"},
    {u"Calling AE ?Title Not Recognized", u"PACS 서버가 CallingAet을 알지 못합니다.!!"},
    {u"Association Rejected", u"PACS 서버가 연결을 거부하였습니다.!!"},
    {u"No presentation context|No Acceptable Presentation|unable to convert dataset",
     u"PACS 서버가 내시경 그림(JPEG)을 받지 않습니다.!!"},
    // Its "Connection reset" tells of one that stood.
    {u"TCP I/O Error", u"PACS 서버와의 연결이 도중에 끊겼습니다.!!"},
    {u"TCP Initialization Error|host|Connection", u"PACS 서버에 연결할 수 없습니다.!!"},
    {u"abort|timeout|Timeout|DIMSE|DUL", u"PACS 서버와의 연결이 도중에 끊겼습니다.!!"},
    {u"open|read|space", u"보낼 파일을 읽지 못했습니다.!!"},
}};

QString Behind(const QString& sentence, const QString& line)
{
    const QString shown = line.size() > LongestLine ? line.left(LongestLine) + u"..."_s : line;
    return u"%1 (%2)"_s.arg(sentence, shown.trimmed());
}

/// A server's answer, as dcmtk words it.
DicomOutcome OutcomeOfAnswer(const QString& answer)
{
    static const QRegularExpression warning(u"^(Success|Warning|Unknown Status: 0x[bB])"_s);
    if (answer.contains(warning))
        return {DicomOutcome::Accepted};
    return {DicomOutcome::Refused, Behind(u"PACS 서버가 그림을 거부하였습니다.!!"_s, answer)};
}

/// What the server doesn't take in any try: the association offers no way for it.
bool IsNotTaken(const QString& line)
{
    return line.contains(u"No presentation context"_s, Qt::CaseInsensitive) ||
           line.contains(u"unable to convert dataset"_s);
}

} // namespace

QString PeerReason(const QStringList& lines)
{
    for (const Reason& reason : Reasons) {
        const QRegularExpression pattern(QString::fromUtf16(reason.pattern), QRegularExpression::CaseInsensitiveOption);
        for (const QString& line : lines) {
            if ((line.startsWith(u"E:") || line.startsWith(u"F:") || line.startsWith(u"W:")) && line.contains(pattern))
                return Behind(QString::fromUtf16(reason.text), line);
        }
    }
    return Behind(u"PACS 서버에 보내지 못했습니다.!!"_s, lines.isEmpty() ? QString() : lines.last());
}

QList<DicomOutcome> OutcomesOfReport(const QStringList& lines, const QStringList& files)
{
    static const QRegularExpression sending(u"Sending file: (.*)$"_s);
    static const QRegularExpression answered(uR"(Received Store Response \((.*)\))"_s);
    QList<std::optional<DicomOutcome>> found(files.size());
    qsizetype at = -1;
    for (const QString& line : lines) {
        if (const auto match = sending.match(line); match.hasMatch())
            at = files.indexOf(match.captured(1).trimmed());
        else if (at < 0)
            continue;
        else if (const auto answer = answered.match(line); answer.hasMatch())
            found[at] = OutcomeOfAnswer(answer.captured(1));
        else if (IsNotTaken(line))
            found[at] = {DicomOutcome::Refused, PeerReason({line})};
    }
    QList<DicomOutcome> outcomes;
    bool isCut = false;
    for (qsizetype each = 0; each < files.size(); ++each) {
        if (found[each]) {
            outcomes << *found[each];
            continue;
        }
        // The first that was begun and has no answer; dcmtk goes on with the others on the dead connection.
        const bool isBegun = at >= 0 && !std::exchange(isCut, true);
        outcomes << DicomOutcome{isBegun ? DicomOutcome::Cut : DicomOutcome::Away, PeerReason(lines)};
    }
    return outcomes;
}
