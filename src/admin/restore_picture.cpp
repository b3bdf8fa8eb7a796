#include "admin/commands.h"
#include "admin/deleted_pictures.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/SenderProcess.h"
#include "filing/picture_restore.h"
#include "filing/PictureJournal.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/terminal.h"
#include "frame/WorkThread.h"
#include "pacs/SenderQueue.h"
#include "records/capture_index.h"
#include "records/patient_lookup.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <QScopeGuard>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// What a visit's grid takes: with more the capture screen takes no further still.
constexpr int PicturesOfGrid = 50;

const QString Gone = u"다른 곳에서 방금 되살렸거나 되살리는 중인 그림입니다.!! (%1)"_s;

/// The one that is meant; nothing, with the reason told, when there is none or more than one.
std::optional<DeletedPicture> Choose(const QStringList& arguments, const QList<DeletedPicture>& ofVisit)
{
    const QString file = arguments.value(4);
    QList<DeletedPicture> meant = ofVisit;
    meant.removeIf([&](const DeletedPicture& picture) {
        return picture.number != WholeNumber(arguments[3]) || (!file.isEmpty() && picture.name != file);
    });
    const auto firstTaken = std::ranges::find(meant, true, &DeletedPicture::isTaken);
    const QString taken = firstTaken != meant.end() ? firstTaken->name : QString();
    meant.removeIf([](const DeletedPicture& picture) { return picture.isTaken; });
    if (meant.size() == 1)
        return meant.first();
    if (meant.isEmpty() && !taken.isEmpty()) {
        TellOnError(u"이미 되살리는 중인 그림입니다. 중단되었으면 되살리던 컴퓨터에서 그 사용자로 pending --write를 "
                    "실행하세요.!! (%1)"_s.arg(taken));
        return std::nullopt;
    }
    if (meant.isEmpty()) {
        TellOnError(u"삭제된 그림 가운데 그런 것이 없습니다.!! list-deleted로 확인하세요."_s);
        return std::nullopt;
    }
    TellOnError(u"같은 번호의 삭제된 그림이 여럿입니다. 파일 이름을 끝에 적어 하나를 고르세요.!!"_s);
    for (const DeletedPicture& picture : meant)
        TellOnError(u"  "_s + picture.name);
    return std::nullopt;
}

/// As the visit's rows have it, else the type that the patient had on that day.
QString PatientType(const Visit& visit)
{
    QString stored = StoredPatientType(visit);
    if (!stored.isEmpty())
        return stored;
    PatientRecordFields patient;
    LookupPatient(visit.chart, {}, patient, visit.ymd);
    return patient.Yuhyung;
}

/// Tells of what the station couldn't show, which stays where it is. A cut picture is shown as far as it reaches, and
/// so comes back.
bool IsReadable(const DeletedPicture& picture)
{
    const QImage image = Pictures().Load(picture.Path());
    if (image.isNull() && !FileExists(picture.Path())) {
        TellOnError(Gone.arg(picture.name));
        return false;
    }
    if (image.isNull()) {
        TellOnError(
            u"그림을 읽을 수 없어 되살리지 않습니다. 파일은 그대로 있습니다.!! (%1)"_s.arg(NativePath(picture.Path())));
        return false;
    }
    if (!CutFileName(image).isEmpty())
        TellOnError(u"끝이 잘린 그림입니다. 있는 데까지 되살립니다.!!"_s);
    if (picture.visit.imageExt != VisitContext.ImageExt)
        TellOnError(u"설정의 확장자는 %1입니다. 이 그림은 설정을 바꾸기 전에는 화면에 보이지 않습니다.!!"_s.arg(
            VisitContext.ImageExt));
    return true;
}

void Tell(const DeletedPicture& picture, const Visit& visit, int number, TerminalOutput& out)
{
    out << u"되살렸습니다: %1 %2 %3 %4번 (%5)\n"_s.arg(visit.chart, visit.ymd, visit.etc, NumberText(number),
                                                       NativePath(visit.PicturePath(number)));
    if (number != picture.number)
        out << u"%1번은 이미 쓰이고 있어 %2번으로 되살렸습니다.\n"_s.arg(NumberText(picture.number),
                                                                         NumberText(number));
    if (picture.wasSwept)
        out << u"이 그림은 삭제한 것이 아니라, 기록이 없어 정리된 것입니다. 기록을 새로 넣었습니다.\n"_s;
    const qsizetype count = StoredNumbers(visit, NumberOrder::Any).size();
    if (count > PicturesOfGrid)
        out << u"이 방문의 그림은 이제 %1장입니다. %2장이 넘으면 캡쳐화면이 더 찍지 않습니다.\n"_s.arg(count).arg(
            PicturesOfGrid);
}

/// Takes the file out of the reach of everybody else. False, with the reason told, when nothing has been changed.
bool Take(const RestoreJob& job, const QByteArray& version)
{
    switch (picture_restore::Take(job, version)) {
    case picture_restore::Taken::Yes:
        return true;
    case picture_restore::Taken::Gone:
        TellOnError(Gone.arg(job.source));
        break;
    case picture_restore::Taken::Another:
        TellOnError(
            u"그 이름의 그림이 방금 다른 것으로 바뀌었습니다. list-deleted로 확인하세요.!! (%1)"_s.arg(job.source));
        break;
    }
    return false;
}

/// The number under which the picture is back; nothing, with the rest told, when something is left to do of it. What it
/// throws has left nothing, or that has been told.
std::optional<int> Bring(const RestoreJob& job, PictureJournal& journal)
{
    QStringList faults;
    try {
        const int number = picture_restore::Bring(job, faults);
        for (const QString& fault : faults)
            TellOnError(fault);
        return number;
    } catch (const picture_restore::Unfinished& error) {
        TellOnError(u"되살렸으나 Log 폴더의 파일이 남았습니다. pending --write로 마치세요.!! (%1)"_s.arg(error.Text()));
        return std::nullopt;
    } catch (const Away&) {
        TellOnError(u"되살리기가 중단되었습니다. 다시 응답하면 pending --write로 마치세요.!!"_s);
        throw;
    } catch (const PlatformError&) {
        try {
            picture_restore::GiveBack(job);
        } catch (const PlatformError& error) {
            TellOnError(u"되살리던 것을 되돌리지 못했습니다. pending --write로 마치세요.!! (%1)"_s.arg(error.Text()));
            throw;
        }
        journal.RemoveRestore(job.id);
        throw;
    }
}

} // namespace

void SendAgain(const Visit& visit, int number, PacsLine::Kind kind)
{
    if (ClientSetup.Pacs.Host.isEmpty())
        return;
    PacsLine line = PacsLine::Of(kind, visit, number);
    line.id = QUuid::createUuid().toString(QUuid::Id128);
    // What is back belongs to its visit as it did. Today's may still be stored.
    line.goes = Trim(visit.ymd) != TextFromDate(UseService<Desktop>().Today());
    try {
        SenderQueue().Add({line});
        UseService<SenderProcess>().Start(false);
    } catch (const PlatformError& error) {
        TellOnError(u"PACS로 보낼 목록에 넣지 못하였습니다. pacs --send로 보내십시오.!! (%1)"_s.arg(error.Text()));
    }
}

int RestorePicture(const QStringList& arguments, TerminalOutput& out)
{
    const QString& section = arguments[2];
    QList<DeletedPicture> ofVisit = DeletedPictures(arguments[0], arguments[1]);
    ofVisit.removeIf([&](const DeletedPicture& picture) { return picture.visit.etc != section; });
    const std::optional<DeletedPicture> picture = Choose(arguments, ofVisit);
    if (!picture)
        return Found;
    const QByteArray version = Files().VersionOf(picture->Path());
    if (!IsReadable(*picture))
        return Found;
    RestoreJob job{QUuid::createUuid().toString(QUuid::Id128), picture->visit, picture->number, picture->name};
    job.visit.yuhyung = PatientType(job.visit);

    WorkThread writer;
    PictureJournal journal(writer, TellOnError, PictureJournal::Heir::OfNobody);
    journal.ClaimsIn({job.visit.captureDir, job.visit.etc});
    journal.StoreRestoreNow(job);
    const auto end = qScopeGuard([&] {
        writer.AwaitIdle();
        journal.End();
    });
    try {
        if (!Take(job, version)) {
            journal.RemoveRestore(job.id);
            return Found;
        }
    } catch (const FilesAway&) {
        throw;
    } catch (const StoredWithFault&) {
        throw;
    } catch (const PlatformError& error) {
        journal.RemoveRestore(job.id);
        TellOnError(
            u"Log 폴더에서 꺼낼 수 없어 되살리지 않습니다. 아무것도 바꾸지 않았습니다.!! (%1)"_s.arg(error.Text()));
        return Found;
    }
    const std::optional<int> number = Bring(job, journal);
    if (!number)
        return Found;
    RecordRestored(job, *number);
    SendAgain(job.visit, *number, PacsLine::Send);
    journal.RemoveRestore(job.id);
    Tell(*picture, job.visit, *number, out);
    return AllWell;
}
