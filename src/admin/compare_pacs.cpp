#include "admin/commands.h"

#include "contracts/dicom.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "identifiers/dicom_uids.h"
#include "records/capture_index.h"
#include "records/study_identity.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QDate>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int RowsAtOnce = 500;

/// Holds the pictures of the archive against what the server has, visit by visit.
class PacsComparison
{
public:
    explicit PacsComparison(TerminalOutput& out)
        : m_out(out), m_kit(CreateObject<DicomKit>(QString::fromUtf16(DicomKitName)))
    {
    }

    int Run(const QString& year)
    {
        Open();
        QList<PictureKey> visit;
        std::optional<PictureKey> last;
        for (;;) {
            const QList<PictureKey> rows = StoredPictures(year, last, RowsAtOnce);
            for (const PictureKey& row : rows) {
                if (!visit.isEmpty() &&
                    (row.chart != visit.first().chart || row.ymd != visit.first().ymd || row.etc != visit.first().etc))
                    Compare(std::exchange(visit, {}));
                visit.append(row);
            }
            if (rows.isEmpty())
                break;
            last = rows.last();
        }
        if (!visit.isEmpty())
            Compare(visit);
        m_out << u"방문 %1건의 그림 %2장 가운데 PACS에 없는 그림 %3장, 내용이 다른 그림 %4장, 읽지 못한 그림 %5장\n"_s
                     .arg(m_visits)
                     .arg(m_pictures)
                     .arg(m_missing)
                     .arg(m_other)
                     .arg(m_unread);
        return m_missing + m_other + m_unread > 0 ? Found : AllWell;
    }

private:
    void Open() { Check(m_kit->Open(ClientSetup.Pacs.Server(), {})); }

    static void Check(const DicomOutcome& outcome)
    {
        if (outcome.kind == DicomOutcome::KindRefused)
            throw PlatformError(u"PACS 서버가 조회(C-FIND)를 받지 않습니다.!! %1"_s.arg(outcome.reason));
        if (outcome.kind != DicomOutcome::Accepted)
            throw PlatformError(outcome.reason);
    }

    void Tell(const QString& what, const PictureKey& picture, const QString& behind)
    {
        m_out << what << u' ' << picture.chart << u' ' << picture.ymd << u' ' << picture.etc << u' ' << behind << u'\n';
    }

    void Compare(const QList<PictureKey>& pictures)
    {
        ++m_visits;
        m_pictures += int(pictures.size());
        const PictureKey& first = pictures.first();
        const Visit visit{
            first.chart,          {}, first.ymd, first.etc, YearFolder(ClientSetup.CaptureRoot, first.ymd),
            VisitContext.ImageExt};
        DicomPicture facts;
        facts.chart = visit.chart;
        facts.ymd = visit.ymd;
        facts.section = visit.etc;
        const std::optional<DicomIdentity> identity = FindIdentity(visit, facts);
        QList<DicomFound> found;
        if (identity) {
            facts.identity = *identity;
            Check(m_kit->FindPictures(StudyUid(facts), SeriesUid(facts), found, {}));
        }
        if (found.isEmpty()) {
            m_missing += int(pictures.size());
            Tell(u"없음"_s, first, u"%1장 모두"_s.arg(pictures.size()));
            return;
        }
        for (const PictureKey& picture : pictures)
            Compare(visit, facts, picture, found);
    }

    void Compare(const Visit& visit, DicomPicture facts, const PictureKey& picture, const QList<DicomFound>& found)
    {
        facts.number = picture.number;
        try {
            const QString uid = InstanceUid(facts, Files().ReadArchivedFile(visit.PicturePath(picture.number)));
            if (std::ranges::find(found, uid, &DicomFound::uid) != found.end())
                return;
            const bool isOther = std::ranges::find(found, picture.number, &DicomFound::number) != found.end();
            ++(isOther ? m_other : m_missing);
            Tell(isOther ? u"다름"_s : u"없음"_s, picture, u"%1번"_s.arg(NumberText(picture.number)));
        } catch (const PlatformError& error) {
            ++m_unread;
            Tell(u"읽지못함"_s, picture, u"%1번 %2"_s.arg(NumberText(picture.number), error.Text().simplified()));
        }
    }

    /// Under what the server has the visit; nothing when it hasn't.
    std::optional<DicomIdentity> FindIdentity(const Visit& visit, DicomPicture facts)
    {
        QList<DicomIdentity> possible;
        if (const auto kept = KeptIdentity(visit))
            possible.append(*kept);
        else if (const auto fresh = NewIdentity(visit, ClientSetup.Pacs, SaupTable))
            possible.append(*fresh);
        possible += FormerIdentities(visit, ClientSetup.Pacs, SaupTable);
        QStringList uids;
        for (const DicomIdentity& identity : std::as_const(possible)) {
            facts.identity = identity;
            uids << StudyUid(facts);
        }
        QList<DicomFoundStudy> studies;
        Check(m_kit->FindStudies(uids, studies, {}));
        for (qsizetype at = 0; at < uids.size(); ++at) {
            for (const DicomFoundStudy& study : std::as_const(studies)) {
                if (study.uid == uids[at] && Trim(study.patientId) == Trim(possible[at].patientId))
                    return possible[at];
            }
        }
        return std::nullopt;
    }

    TerminalOutput& m_out;
    const std::unique_ptr<DicomKit> m_kit;
    int m_visits = 0;
    int m_pictures = 0;
    int m_missing = 0;
    int m_other = 0;
    int m_unread = 0;
};

} // namespace

int ComparePacs(const QString& year, TerminalOutput& out)
{
    if (ClientSetup.Pacs.Host.isEmpty()) {
        out << u"설정에 PACS 서버가 없습니다.!! ([Pacs] Host)\n"_s;
        return CantWork;
    }
    return PacsComparison(out).Run(year.isEmpty() ? QDate::currentDate().toString(u"yyyy"_s) : year);
}
