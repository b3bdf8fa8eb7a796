#include "platform/disc/xorriso_reasons.h"

#include <QRegularExpression>

#include <array>

using namespace Qt::StringLiterals;

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
