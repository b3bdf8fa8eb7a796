#include "admin/ArchiveFindings.h"

#include "admin/Report.h"
#include "contracts/files.h"

using namespace Qt::StringLiterals;

namespace {

/// So many findings of a kind and year are told.
constexpr int MostTold = 1000;

} // namespace

namespace findings {

const FindingKind Damaged{u"손상"_s, u"damaged"_s};
const FindingKind Changed{u"다름"_s, u"changed"_s};
const FindingKind Swapped{u"뒤바뀜"_s, u"swapped"_s};
const FindingKind DeletedChanged{u"지운그림다름"_s, u"deleted-changed"_s};
const FindingKind NoPicture{u"그림없음"_s, u"no-picture"_s};
const FindingKind NoFile{u"파일없음"_s, u"no-file"_s};
const FindingKind NoRow{u"기록없음"_s, u"no-row"_s};
const FindingKind NoVisitRow{u"방문기록없음"_s, u"no-visit-row"_s};
const FindingKind NoIndex{u"색인없음"_s, u"no-index"_s};
const FindingKind NotAFile{u"파일아님"_s, u"not-a-file"_s};
const FindingKind FolderLink{u"폴더링크"_s, u"folder-link"_s};
const FindingKind Unreadable{u"읽지못함"_s, u"unreadable"_s};
const FindingKind BrokenName{u"깨진이름"_s, u"broken-name"_s};
const FindingKind Nothing{u"비어있음"_s, u"nothing"_s};
const FindingKind Leftover{u"잔여"_s, u"leftover"_s};
const FindingKind BeingWritten{u"쓰는중"_s, u"being-written"_s, false};
const FindingKind UnknownFile{u"모르는파일"_s, u"unknown-file"_s, false};

} // namespace findings

bool ArchiveFindings::IsTold(const FindingKind& kind) const
{
    const auto count = m_counts.find(&kind);
    return m_tellsAll || count == m_counts.end() || count->second < MostTold;
}

void ArchiveFindings::Tell(const FindingKind& kind, const QString& what, const QString& detail, QJsonObject facts)
{
    const bool isTold = IsTold(kind);
    ++m_counts[&kind];
    m_faults += kind.isFault ? 1 : 0;
    if (!isTold)
        return;
    facts[u"kind"_s] = kind.key;
    facts[u"fault"_s] = kind.isFault;
    if (!detail.isEmpty())
        facts[u"detail"_s] = detail;
    m_report.Item(kind.word + u' ' + what + (detail.isEmpty() ? QString() : u" (%1)"_s.arg(detail)), facts);
}

void ArchiveFindings::TellPath(const FindingKind& kind, const QString& path, const QString& detail, QJsonObject facts)
{
    const QString native = NativePath(path);
    facts[u"path"_s] = native;
    Tell(kind, native, detail, facts);
}

void ArchiveFindings::EndYear(const QString& year)
{
    for (const auto& [kind, count] : m_counts) {
        if (const int more = count - MostTold; more > 0 && !m_tellsAll)
            m_report.Item(u"%1 외 %2건 (%3년, --all은 모두 알립니다)"_s.arg(kind->word).arg(more).arg(year),
                          {{u"kind"_s, kind->key}, {u"fault"_s, kind->isFault}, {u"year"_s, year}, {u"more"_s, more}});
    }
    m_counts.clear();
}
