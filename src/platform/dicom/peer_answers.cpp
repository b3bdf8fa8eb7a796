#include "platform/dicom/peer_answers.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestReason = 160;

struct Meaning
{
    int mask; ///< Of the status's bits that count.
    int status;
    DicomOutcome::Kind kind;
    const char16_t* text;
};

constexpr int Whole = 0xFFFF;
constexpr int Family = 0xFF00; ///< The lower byte is the server's own.
constexpr int LargeFamily = 0xF000;

constexpr std::array Meanings{
    Meaning{Whole, 0x0000, DicomOutcome::Accepted, u""},
    // Taken, with a remark on what the object holds.
    Meaning{LargeFamily, 0xB000, DicomOutcome::Accepted, u""},
    Meaning{Whole, 0x0107, DicomOutcome::Accepted, u""},
    Meaning{Whole, 0x0116, DicomOutcome::Accepted, u""},
    // It has the object of this very identifier, which the content is part of.
    Meaning{Whole, 0x0111, DicomOutcome::Accepted, u""},
    Meaning{Family, 0xA700, DicomOutcome::Passing, u"PACS 서버에 자리가 없습니다.!!"},
    Meaning{Whole, 0x0213, DicomOutcome::Passing, u"PACS 서버에 자리가 없습니다.!!"},
    Meaning{Whole, 0x0110, DicomOutcome::Passing, u"PACS 서버가 지금 처리하지 못합니다.!!"},
    Meaning{Whole, 0x0122, DicomOutcome::KindRefused, u""},
    Meaning{Whole, 0x0118, DicomOutcome::KindRefused, u""},
    Meaning{Whole, 0x0211, DicomOutcome::KindRefused, u""},
    Meaning{Whole, 0x0124, DicomOutcome::PeerRefused, u"PACS 서버가 이 컴퓨터에 허락하지 않습니다.!!"},
};

constexpr int CallingNotRecognized = 0x0103;
constexpr int CalledNotRecognized = 0x0107;

QString HexOf(int status)
{
    return QString::number(status, 16).toUpper().rightJustified(4, u'0');
}

QString NotAsked(peeranswers::Asked asked)
{
    using peeranswers::Asked;
    switch (asked) {
    case Asked::Store:
        return u"PACS 서버가 이 종류의 그림을 받지 않습니다.!!"_s;
    case Asked::Report:
        return u"PACS 서버가 결과지(PDF)를 받지 않습니다.!!"_s;
    case Asked::Movie:
        return u"PACS 서버가 동영상(MPEG-4)을 받지 않습니다.!!"_s;
    case Asked::Rejection:
        return u"PACS 서버가 삭제 통지를 받지 않습니다.!!"_s;
    case Asked::Find:
        return u"PACS 서버가 조회를 받지 않습니다.!!"_s;
    case Asked::Echo:
        break;
    }
    return u"PACS 서버가 연결 확인을 받지 않습니다.!!"_s;
}

QString Refusal(peeranswers::Asked asked)
{
    using peeranswers::Asked;
    switch (asked) {
    case Asked::Store:
        return u"PACS 서버가 그림을 거부하였습니다.!!"_s;
    case Asked::Report:
        return u"PACS 서버가 결과지를 거부하였습니다.!!"_s;
    case Asked::Movie:
        return u"PACS 서버가 동영상을 거부하였습니다.!!"_s;
    case Asked::Rejection:
        return u"PACS 서버가 삭제 통지를 거부하였습니다.!!"_s;
    default:
        return u"PACS 서버가 물음을 거부하였습니다.!!"_s;
    }
}

} // namespace

QString peeranswers::Reason(const QString& sentence, const QString& detail)
{
    static const QRegularExpression controls(uR"([\p{C}\p{Zl}\p{Zp}])"_s);
    QString shown = detail;
    shown = shown.replace(controls, u" "_s).simplified();
    if (shown.isEmpty())
        return sentence;
    const QString begun = sentence + u" ("_s;
    const qsizetype room = LongestReason - begun.size() - 1;
    if (shown.size() > room)
        shown = shown.left(room - 3) + u"..."_s;
    return begun + shown + u')';
}

DicomOutcome peeranswers::OfStatus(Asked asked, int status, const QByteArray& comment)
{
    const QString detail = HexOf(status) + u' ' + QString::fromUtf8(comment);
    const auto meaning =
        std::ranges::find_if(Meanings, [status](const Meaning& each) { return (status & each.mask) == each.status; });
    if (meaning == Meanings.end())
        return {DicomOutcome::Refused, Reason(Refusal(asked), detail), status};
    if (meaning->kind == DicomOutcome::Accepted)
        return {DicomOutcome::Accepted, {}, status};
    const QString sentence =
        meaning->kind == DicomOutcome::KindRefused ? NotAsked(asked) : QString::fromUtf16(meaning->text);
    return {meaning->kind, Reason(sentence, detail), status};
}

DicomOutcome peeranswers::OfRejection(bool isPassing, int reason)
{
    const QString detail = u"A-ASSOCIATE-RJ "_s + HexOf(reason);
    if (isPassing)
        return {DicomOutcome::Passing, Reason(u"PACS 서버가 지금은 연결을 받지 않습니다.!!"_s, detail)};
    const QString sentence = reason == CalledNotRecognized    ? u"PACS 서버가 CalledAet을 알지 못합니다.!!"_s
                             : reason == CallingNotRecognized ? u"PACS 서버가 CallingAet을 알지 못합니다.!!"_s
                                                              : u"PACS 서버가 연결을 거부하였습니다.!!"_s;
    return {DicomOutcome::PeerRefused, Reason(sentence, detail)};
}

DicomOutcome peeranswers::OfNoContext(Asked asked)
{
    return {DicomOutcome::KindRefused, NotAsked(asked)};
}
