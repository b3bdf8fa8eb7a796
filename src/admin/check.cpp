#include "admin/commands.h"

#include "admin/check_abilities.h"
#include "admin/check_tables.h"
#include "admin/Report.h"
#include "contracts/dicom.h"
#include "contracts/dicom_services.h"
#include "contracts/OutsideChecks.h"
#include "filing/capture_folders.h"
#include "frame/components.h"
#include "pacs/SenderQueue.h"
#include "records/Statement.h"
#include "records/study_identity.h"
#include "session/VisitContext.h"
#include "visit/Visit.h"

#include <QString>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// In the lines and in the document.
std::pair<QString, QString> WordsOf(CheckLine::Verdict verdict)
{
    switch (verdict) {
    case CheckLine::Right:
        return {u"정상"_s, u"right"_s};
    case CheckLine::Remark:
        return {u"참고"_s, u"remark"_s};
    case CheckLine::Wrong:
        break;
    }
    return {u"이상"_s, u"wrong"_s};
}

/// A driver's text may have several lines.
QString OneLine(const QString& text)
{
    return text.simplified();
}

void Print(const CheckLines& lines, Report& report)
{
    for (const CheckLine& line : lines) {
        const auto [word, key] = WordsOf(line.verdict);
        const QString found = OneLine(line.found);
        const QString toDo = OneLine(line.toDo);
        report.Item(u"[%1] %2: %3"_s.arg(word, line.what, found) + (toDo.isEmpty() ? QString() : u" → "_s + toDo),
                    {{u"verdict"_s, key}, {u"what"_s, line.what}, {u"found"_s, found}, {u"toDo"_s, toDo}});
    }
    report.Flush();
}

CheckLine CheckPacs(const PacsSetupRecord& pacs)
{
    const QString place = u"%1:%2, %3"_s.arg(pacs.Host).arg(pacs.Port).arg(pacs.CalledAet);
    const auto kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
    const DicomOutcome answer = kit->Echo(pacs.Server(), {});
    if (answer.kind == DicomOutcome::Accepted)
        return {CheckLine::Right, u"PACS 서버"_s, place};
    return {CheckLine::Wrong, u"PACS 서버"_s, u"%1: %2"_s.arg(place, answer.reason),
            u"[Pacs] 구역과 서버를 확인하십시오"_s};
}

/// The hospital's other servers that the setup names.
CheckLines CheckServices(const PacsSetupRecord& pacs)
{
    CheckLines lines;
    const auto services = CreateObject<DicomServices>(QString::fromUtf16(DicomServicesName));
    const auto reach = [&](const QString& what, const QString& section, const DicomPeer& peer, DicomService service) {
        const QString place = u"%1:%2, %3"_s.arg(peer.host).arg(peer.port).arg(peer.calledAet);
        const DicomOutcome answer = services->Reach(peer, service, {});
        if (answer.kind == DicomOutcome::Accepted)
            lines.append({CheckLine::Right, what, place, {}});
        else
            lines.append({CheckLine::Wrong, what, u"%1: %2"_s.arg(place, answer.reason),
                          u"[%1] 구역과 서버를 확인하십시오"_s.arg(section)});
    };
    if (!pacs.Worklist.host.isEmpty())
        reach(u"워크리스트 서버"_s, u"Worklist"_s, pacs.Worklist, DicomService::Worklist);
    if (!pacs.Steps.host.isEmpty())
        reach(u"검사진행(MPPS) 서버"_s, u"Mpps"_s, pacs.Steps, DicomService::Steps);
    if (pacs.CommitPort == 0)
        return lines;
    reach(u"PACS 보관 확인"_s, u"Pacs"_s, pacs.Server(), DicomService::Commitment);
    const QString port = QString::number(pacs.CommitPort);
    const auto queues = SenderQueue::In(LocalFolder());
    if (services->Listen(pacs.CommitPort, pacs.Tls, {}))
        lines.append({CheckLine::Right, u"보관 확인 포트"_s, u"%1, 비어 있음"_s.arg(port), {}});
    else if (std::ranges::any_of(queues, &SenderQueue::Found::isSenderThere))
        lines.append({CheckLine::Right, u"보관 확인 포트"_s, u"%1, 보내는 프로그램이 쓰고 있음"_s.arg(port), {}});
    else
        lines.append({CheckLine::Wrong, u"보관 확인 포트"_s,
                      u"%1을(를) 열 수 없습니다. 다른 프로그램이 쓰거나 1024보다 작습니다"_s.arg(port),
                      u"[Pacs] CommitPort를 바꾸십시오"_s});
    return lines;
}

/// Nothing when visits can be told from those of other clinics.
CheckLines CheckIdentity(const OutsideChecks::Setup& setup)
{
    if (NewIdentity({}, setup.client.Pacs, setup.places))
        return {};
    return {
        {CheckLine::Wrong, u"PACS 식별자"_s,
         u"기관 이름, UID의 뿌리, 첫 사업장의 요양기관번호가 모두 없습니다. 적을 때까지 그림은 보내지 않고 기다립니다"_s,
         u"[Pacs] Institution이나 UidRoot를 적으십시오"_s}};
}

} // namespace

int CheckStation(Report& report)
{
    auto& checks = UseService<OutsideChecks>();
    OutsideChecks::Setup setup = checks.LookAtSetup();
    CheckLines all = setup.lines;
    Print(setup.lines, report);
    const auto look = [&](const CheckLines& lines) {
        Print(lines, report);
        all += lines;
    };
    if (setup.connection != nullptr) {
        Connection = setup.connection;
        look(CheckTables(setup.client, setup.isServer));
    }
    if (setup.isGood)
        look(checks.LookAtCaptureRoot(setup.client));
    look(checks.LookAtMachine(setup.client));
    if (setup.isGood && !setup.client.Pacs.Host.isEmpty()) {
        const CheckLine server = CheckPacs(setup.client.Pacs);
        look(CheckIdentity(setup) + CheckLines{server});
        if (server.verdict == CheckLine::Right)
            look(CheckAbilities(setup.client.Pacs));
        look(CheckServices(setup.client.Pacs));
    }
    const auto wrong = std::ranges::count(all, CheckLine::Wrong, &CheckLine::verdict);
    report.Total(wrong == 0 ? u"이상이 없습니다."_s : u"이상 %1건"_s.arg(wrong), {{u"wrong"_s, qint64(wrong)}});
    return wrong == 0 ? AllWell : Found;
}
