#include "admin/commands.h"
#include "admin/deleted_pictures.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/pictures.h"
#include "contracts/PlatformError.h"
#include "contracts/SenderProcess.h"
#include "filing/capture_folders.h"
#include "filing/NumberClaim.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/terminal.h"
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

/// The one that is meant; nothing, with the reason told, when there is none or more than one.
std::optional<DeletedPicture> Choose(const QStringList& arguments, const QList<DeletedPicture>& ofVisit)
{
    const QString file = arguments.value(4);
    QList<DeletedPicture> meant = ofVisit;
    meant.removeIf([&](const DeletedPicture& picture) {
        return picture.number != WholeNumber(arguments[3]) || (!file.isEmpty() && picture.name != file);
    });
    if (meant.size() == 1)
        return meant.first();
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

/// Its own number if nobody has it, else one that no picture of the visit has or had.
std::unique_ptr<NumberClaim> ClaimNumber(const Visit& visit, int wanted, const QList<DeletedPicture>& deleted,
                                         int& number)
{
    const QString identity = QUuid::createUuid().toString(QUuid::Id128);
    int largest = 0;
    for (number = wanted; number <= Visit::LargestNumber; number = std::max(number, largest) + 1) {
        auto claim = NumberClaim::Take(visit, number, identity);
        if (claim != nullptr && !NumberClaim::IsPictureThere(visit, number) && !HasPictureRow(visit, number))
            return claim;
        claim.reset();
        for (const int stored : StoredNumbers(visit, NumberOrder::Any))
            largest = std::max(largest, stored);
        for (const DeletedPicture& picture : deleted)
            largest = std::max(largest, picture.number);
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

/// The file stands whole under that number and its rows are in, or nothing has changed.
void Place(const DeletedPicture& picture, const Visit& visit, int number)
{
    const QByteArray content = Files().ReadArchivedFile(picture.Path());
    const QString live = visit.PicturePath(number);
    auto undo = qScopeGuard([&live] {
        try {
            DeleteFile(live);
        } catch (const PlatformError& error) {
            TellOnError(u"되살리던 파일을 지우지 못했습니다.!! (%1: %2)"_s.arg(NativePath(live), error.Text()));
        }
    });
    try {
        if (!Files().WriteNewFile(live, content)) {
            undo.dismiss();
            throw PlatformError(u"그 번호의 그림이 방금 생겼습니다. 다시 실행하세요.!! (%1)"_s.arg(NativePath(live)));
        }
    } catch (const StoredWithFault& error) {
        TellOnError(error.Text());
    }
    if (Files().ReadArchivedFile(live) != content)
        throw PlatformError(u"그림파일을 옮기지 못했습니다.!! (%1)"_s.arg(NativePath(live)));
    try {
        AddCaptureRows(visit, number);
    } catch (const DatabaseAway&) {
        TellOnError(u"데이터베이스가 대답하지 않아 되돌립니다. %1번의 기록이 남았는지 verify로 확인하세요.!!"_s.arg(
            NumberText(number)));
        throw;
    }
    undo.dismiss();
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

/// What is back belongs to its visit as it did. Today's may still be stored.
void SendAgain(const Visit& visit, int number)
{
    if (ClientSetup.Pacs.Host.isEmpty())
        return;
    PacsLine line = PacsLine::Of(PacsLine::Send, visit, number);
    line.id = QUuid::createUuid().toString(QUuid::Id128);
    line.goes = Trim(visit.ymd) != TextFromDate(UseService<Desktop>().Today());
    try {
        SenderQueue().Add({line});
        UseService<SenderProcess>().Start(false);
    } catch (const PlatformError& error) {
        TellOnError(u"PACS로 보낼 목록에 넣지 못하였습니다. pacs --send로 보내십시오.!! (%1)"_s.arg(error.Text()));
    }
}

} // namespace

int RestorePicture(const QStringList& arguments, TerminalOutput& out)
{
    const QString& section = arguments[2];
    QList<DeletedPicture> ofVisit = DeletedPictures(arguments[0], arguments[1]);
    ofVisit.removeIf([&](const DeletedPicture& picture) { return picture.visit.etc != section; });
    const std::optional<DeletedPicture> picture = Choose(arguments, ofVisit);
    if (!picture)
        return Found;
    Visit visit = picture->visit;
    if (!IsReadable(*picture))
        return Found;
    visit.yuhyung = PatientType(visit);
    EnsureFolderOfYear(visit.captureDir, visit.SectionFolder());
    int number = 0;
    const std::unique_ptr<NumberClaim> claim = ClaimNumber(visit, picture->number, ofVisit, number);
    Place(*picture, visit, number);
    try {
        DeleteFile(picture->Path());
    } catch (const PlatformError& error) {
        TellOnError(u"되살렸으나 Log 폴더의 파일이 남았습니다. 다시 되살리지 마세요.!! (%1)"_s.arg(error.Text()));
    }
    SendAgain(visit, number);
    Tell(*picture, visit, number, out);
    return AllWell;
}
